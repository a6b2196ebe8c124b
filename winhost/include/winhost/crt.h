#ifndef WINHOST_CRT_H
#define WINHOST_CRT_H

// The stream calls fopen, fread, fwrite, fseek, fflush, fclose and remove need no declaration here: the
// linker leads them to this stand-in (--wrap), so that they take `C:\...` paths and can be made to fail.

#define _MAX_PATH 260
#define _MAX_DRIVE 3
#define _MAX_DIR 256
#define _MAX_FNAME 256
#define _MAX_EXT 256

/// Splits a path into drive, directory with its last separator, name, and extension with its dot. Null
/// outputs are left out; a part longer than its _MAX_ size is cut.
extern "C" void _splitpath(const char* path, char* drive, char* directory, char* name, char* extension);

#endif
