#include "registryStore.h"

#include "descriptors.h"
#include "errorNumbers.h"
#include "registryText.h"
#include <cerrno>
#include <cstdio>
#include <ctime>
#include <fcntl.h>
#include <mutex>
#include <sys/file.h>
#include <sys/stat.h>

namespace winhost {

namespace {

/// Empty without WINHOST_ROOT.
std::string registryFile() {
    const std::string root(hostRoot());
    return root.empty() ? root : root + "/registry.reg";
}

std::string readAll(int descriptor) {
    std::string bytes;
    char block[65536];
    for (ssize_t count = ::read(descriptor, block, sizeof block); count > 0;
         count = ::read(descriptor, block, sizeof block))
        bytes.append(block, static_cast<std::size_t>(count));
    return bytes;
}

/// The content of the file; an empty registry when there is no file. Null when it is not a registry file.
std::shared_ptr<RegistryKey> load(const Descriptor& file) {
    auto root = std::make_shared<RegistryKey>();
    if (file.get() >= 0 && !parseRegistry(readAll(file.get()), *root))
        return nullptr;
    root->create(u"HKEY_LOCAL_MACHINE");
    return root;
}

long long nanoseconds(const timespec& time) noexcept {
    return time.tv_sec * 1000000000LL + time.tv_nsec;
}

/// What tells one state of the file from another.
struct Stamp {
    std::string path;
    ino_t inode = 0;
    off_t size = 0;
    long long time = 0;

    bool operator==(const Stamp& other) const {
        return inode == other.inode && size == other.size && time == other.time && path == other.path;
    }
};

struct Cache {
    std::mutex mutex;
    Stamp stamp;
    bool trusted = false; ///< false when the file may have changed without another stamp
    RegistrySnapshot root;
};

/// Replaces the content of a file. On failure false, with errno set.
bool writeFile(const std::string& path, const std::string& bytes) noexcept {
    const Descriptor file(::open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0666));
    return file.get() >= 0 && writeAll(file.get(), bytes.data(), bytes.size()) == bytes.size();
}

} // namespace

RegistrySnapshot registrySnapshot() {
    static Cache cache;
    const std::lock_guard<std::mutex> guard(cache.mutex);
    Stamp stamp{registryFile()};
    struct stat status = {};
    if (::stat(stamp.path.c_str(), &status) == 0) {
        stamp.inode = status.st_ino;
        stamp.size = status.st_size;
        stamp.time = nanoseconds(status.st_mtim);
    }
    if (!cache.trusted || !(stamp == cache.stamp)) {
        timespec now = {};
        ::clock_gettime(CLOCK_REALTIME, &now);
        cache.trusted = false;
        cache.root = load(Descriptor(::open(stamp.path.c_str(), O_RDONLY | O_CLOEXEC)));
        cache.stamp = std::move(stamp);
        // The clock of file times is coarse: a file written just now may change again within the same tick.
        constexpr long long clockTick = 50000000; // nanoseconds
        cache.trusted = nanoseconds(now) - cache.stamp.time > clockTick;
    }
    return cache.root;
}

LSTATUS changeRegistry(const std::function<LSTATUS(RegistryKey& root)>& change) {
    const std::string path = registryFile();
    if (path.empty())
        return ERROR_PATH_NOT_FOUND;
    const Descriptor lock(::open((path + ".lck").c_str(), O_RDONLY | O_CREAT | O_CLOEXEC, 0666));
    if (lock.get() < 0 || ::flock(lock.get(), LOCK_EX) != 0)
        return static_cast<LSTATUS>(windowsError(errno));
    const std::shared_ptr<RegistryKey> root = load(Descriptor(::open(path.c_str(), O_RDONLY | O_CLOEXEC)));
    if (root == nullptr)
        return ERROR_BADDB;
    const LSTATUS result = change(*root);
    if (result != ERROR_SUCCESS)
        return result;
    const std::string next = path + ".new";
    if (!writeFile(next, formatRegistry(*root)) || std::rename(next.c_str(), path.c_str()) != 0)
        return static_cast<LSTATUS>(windowsError(errno));
    return ERROR_SUCCESS;
}

} // namespace winhost
