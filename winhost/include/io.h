#ifndef WINHOST_IO_H
#define WINHOST_IO_H

#include <cstdint>
#include <cstdio>

extern "C" {

/// The descriptor of a stream, owned by the stream; -1 on failure.
int _fileno(std::FILE* stream);
/// The handle of a stream's descriptor, owned by the stream; -1 for an invalid descriptor.
std::intptr_t _get_osfhandle(int descriptor);
}

#endif
