#include "descriptors.h"
#include "errorNumbers.h"
#include "faultCheck.h"
#include "io.h"
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <stdio_ext.h>

// The linker's --wrap redirects the stream calls of all who link this stand-in to the __wrap_ functions here.
// Within this library the plain names are the calls of the C library.

using winhost::Call;

namespace {

/// Whether a fault makes this call fail; then errno and the last error are set.
bool streamFails(Call call) noexcept {
    const bool struck = winhost::fails(call);
    if (struck)
        errno = winhost::errnoOf(GetLastError());
    return struck;
}

bool streamFails(Call call, const std::FILE* stream) noexcept {
    const bool standard = stream == stdin || stream == stdout || stream == stderr || stream == nullptr;
    return !standard && streamFails(call);
}

void setErrorFlag(std::FILE* stream) noexcept {
    stream->_flags |= _IO_ERR_SEEN; // the C library has no function for it
}

/// What a failing flush or close could not write is lost, as on a full disk.
void dropUnwritten(std::FILE* stream) noexcept {
    if (::__fwriting(stream) != 0)
        ::__fpurge(stream);
}

/// Transfers half of the bytes, then fails; errno stays as the caller set it. Returns the number of whole
/// elements.
template <class Transfer>
std::size_t failHalfway(std::FILE* stream, std::size_t size, std::size_t count, Transfer transfer) noexcept {
    const int error = errno;
    const std::size_t done = size == 0 ? 0 : transfer(size * count / 2) / size;
    setErrorFlag(stream);
    errno = error;
    return done;
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
    if (streamFails(Call::fopen))
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
    if (!streamFails(Call::fread, stream))
        return std::fread(buffer, size, count, stream);
    return failHalfway(stream, size, count, [&](std::size_t n) { return std::fread(buffer, 1, n, stream); });
}

std::size_t __wrap_fwrite(const void* buffer, std::size_t size, std::size_t count, std::FILE* stream) {
    if (!streamFails(Call::fwrite, stream))
        return std::fwrite(buffer, size, count, stream);
    return failHalfway(stream, size, count, [&](std::size_t n) { return std::fwrite(buffer, 1, n, stream); });
}

int __wrap_fseek(std::FILE* stream, long offset, int origin) {
    return streamFails(Call::fseek, stream) ? -1 : std::fseek(stream, offset, origin);
}

int __wrap_fflush(std::FILE* stream) {
    if (streamFails(Call::fflush, stream)) {
        dropUnwritten(stream);
        setErrorFlag(stream);
        return EOF;
    }
    return std::fflush(stream);
}

int __wrap_fclose(std::FILE* stream) {
    const bool struck = streamFails(Call::fclose, stream);
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
    if (streamFails(Call::remove))
        return -1;
    return winhost::deleteFile(winhost::HostPath(path)) ? 0 : -1;
}

int _fileno(std::FILE* stream) {
    return streamFails(Call::_fileno) ? -1 : ::fileno(stream);
}

std::intptr_t _get_osfhandle(int descriptor) {
    const bool bad = streamFails(Call::_get_osfhandle) || descriptor < 0;
    return reinterpret_cast<std::intptr_t>(bad ? INVALID_HANDLE_VALUE : winhost::handleOf(descriptor));
}
}
