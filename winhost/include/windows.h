#ifndef WINHOST_WINDOWS_H
#define WINHOST_WINDOWS_H

// The Windows calls that this project makes, by their Windows names, for builds on Linux. Each behaves as its
// namesake as far as the project relies on it; the comments in these headers say where one does less.

#include "winhost/crt.h"
#include "winhost/errors.h"
#include "winhost/files.h"
#include "winhost/modules.h"
#include "winhost/registry.h"
#include "winhost/synchronization.h"
#include "winhost/text.h"
#include "winhost/types.h"

#endif
