#include "descriptors.h"
#include "faultCheck.h"
#include "io.h"
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <stdio_ext.h>

// The linker's --wrap leads the stream calls of whatever links this stand-in to the __wrap_ functions here;
// within this library the plain names are the real calls.

using winhost::Call;

namespace {

int errnoOf(DWORD error) noexcept {
    switch (error) {
    case ERROR_DISK_FULL:
        return ENOSPC;
    case ERROR_ACCESS_DENIED:
    case ERROR_SHARING_VIOLATION:
        return EACCES;
    case ERROR_FILE_NOT_FOUND:
    case ERROR_PATH_NOT_FOUND:
        return ENOENT;
    case ERROR_TOO_MANY_OPEN_FILES:
        return EMFILE;
    case ERROR_NOT_ENOUGH_MEMORY:
        return ENOMEM;
    case ERROR_INVALID_HANDLE:
        return EBADF;
    default:
        return EIO;
    }
}

bool strikes(Call call) noexcept {
    const bool struck = winhost::fails(call);
    if (struck)
        errno = errnoOf(GetLastError());
    return struck;
}

bool strikes(Call call, const std::FILE* stream) noexcept {
    const bool standard = stream == stdin || stream == stdout || stream == stderr || stream == nullptr;
    return !standard && strikes(call);
}

void setErrorFlag(std::FILE* stream) noexcept {
    stream->_flags |= _IO_ERR_SEEN; // the C library offers no call for it
}

/// What a failing flush or close could not write is lost, as on a full disk.
void dropUnwritten(std::FILE* stream) noexcept {
    if (::__fwriting(stream) != 0)
        ::__fpurge(stream);
}

winhost::OpenRequest requestOf(const char* mode) noexcept {
    winhost::OpenRequest request;
    const bool update = std::strchr(mode, '+') != nullptr;
    request.write = mode[0] != 'r' || update;
    request.create = mode[0] != 'r';
    request.mustCreate = std::strchr(mode, 'x') != nullptr;
    request.truncate = mode[0] == 'w';
    request.append = mode[0] == 'a';
    return request;
}

} // namespace

extern "C" {

std::FILE* __wrap_fopen(const char* path, const char* mode);
std::size_t __wrap_fread(void* buffer, std::size_t size, std::size_t count, std::FILE* stream);
std::size_t __wrap_fwrite(const void* buffer, std::size_t size, std::size_t count, std::FILE* stream);
int __wrap_fseek(std::FILE* stream, long offset, int origin);
int __wrap_fflush(std::FILE* stream);
int __wrap_fclose(std::FILE* stream);
int __wrap_remove(const char* path);

std::FILE* __wrap_fopen(const char* path, const char* mode) {
    if (strikes(Call::fopen))
        return nullptr;
    const int descriptor = winhost::openFile(winhost::HostPath(path), requestOf(mode));
    if (descriptor < 0)
        return nullptr;
    std::FILE* const stream = ::fdopen(descriptor, mode);
    if (stream == nullptr)
        ::close(descriptor);
    else
        winhost::countResources(+1);
    return stream;
}

std::size_t __wrap_fread(void* buffer, std::size_t size, std::size_t count, std::FILE* stream) {
    if (!strikes(Call::fread, stream))
        return std::fread(buffer, size, count, stream);
    const int error = errno;
    const std::size_t done = size == 0 ? 0 : std::fread(buffer, 1, size * count / 2, stream) / size;
    setErrorFlag(stream);
    errno = error;
    return done;
}

std::size_t __wrap_fwrite(const void* buffer, std::size_t size, std::size_t count, std::FILE* stream) {
    if (!strikes(Call::fwrite, stream))
        return std::fwrite(buffer, size, count, stream);
    const int error = errno;
    const std::size_t done = size == 0 ? 0 : std::fwrite(buffer, 1, size * count / 2, stream) / size;
    setErrorFlag(stream);
    errno = error;
    return done;
}

int __wrap_fseek(std::FILE* stream, long offset, int origin) {
    return strikes(Call::fseek, stream) ? -1 : std::fseek(stream, offset, origin);
}

int __wrap_fflush(std::FILE* stream) {
    if (strikes(Call::fflush, stream)) {
        dropUnwritten(stream);
        setErrorFlag(stream);
        return EOF;
    }
    return std::fflush(stream);
}

int __wrap_fclose(std::FILE* stream) {
    const bool struck = strikes(Call::fclose, stream);
    const int error = errno;
    if (struck)
        dropUnwritten(stream);
    const int result = std::fclose(stream);
    winhost::countResources(-1);
    if (struck)
        errno = error;
    return struck ? EOF : result;
}

int __wrap_remove(const char* path) {
    if (strikes(Call::remove))
        return -1;
    return winhost::deleteFile(winhost::HostPath(path)) ? 0 : -1;
}

int _fileno(std::FILE* stream) {
    return strikes(Call::_fileno) ? -1 : ::fileno(stream);
}

std::intptr_t _get_osfhandle(int descriptor) {
    const bool bad = strikes(Call::_get_osfhandle) || descriptor < 0;
    return reinterpret_cast<std::intptr_t>(bad ? INVALID_HANDLE_VALUE : winhost::handleOf(descriptor));
}
}
