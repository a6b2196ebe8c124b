#ifndef WINHOST_WINDOWS_H
#define WINHOST_WINDOWS_H

// The Windows calls that this project makes, by their Windows names, for builds on Linux. Each behaves as on
// Windows as far as the project depends on it; the comments in these headers say where a call does less.
// Structures have only the members in use.
//
// fopen, fread, fwrite, fseek, fflush, fclose and remove are not declared here: the linker redirects them to
// this stand-in (--wrap), so that they understand `C:\...` paths and can be made to fail.

#include "winhost/errors.h"
#include "winhost/files.h"
#include "winhost/modules.h"
#include "winhost/registry.h"
#include "winhost/security.h"
#include "winhost/synchronization.h"
#include "winhost/text.h"
#include "winhost/types.h"

#endif
