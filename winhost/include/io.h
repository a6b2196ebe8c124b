#ifndef WINHOST_IO_H
#define WINHOST_IO_H

#include <cstdint>
#include <cstdio>

extern "C" {

int _fileno(std::FILE* stream);
/// The handle beneath a stream's descriptor, which stays the stream's; -1 for a descriptor that is none.
std::intptr_t _get_osfhandle(int descriptor);
}

#endif
