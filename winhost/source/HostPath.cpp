#include "HostPath.h"

#include "textConversion.h"
#include <cctype>
#include <cstdlib>
#include <cstring>
#include <dirent.h>
#include <memory>
#include <strings.h>
#include <unistd.h>
#include <utility>

namespace winhost {

namespace {

bool isDrivePath(std::string_view path) noexcept {
    return path.size() >= 2 && path[1] == ':' && std::isalpha(static_cast<unsigned char>(path[0])) != 0;
}

struct CloseFolder {
    void operator()(DIR* folder) const noexcept { ::closedir(folder); }
};

/// Finds the entry of `folder` that differs from `name` only in case, and overwrites `name` with it. False
/// when there is none.
bool findEntry(const char* folder, char* name) noexcept {
    const std::unique_ptr<DIR, CloseFolder> entries(::opendir(folder));
    while (const dirent* entry = entries ? ::readdir(entries.get()) : nullptr) {
        if (::strcasecmp(static_cast<const char*>(entry->d_name), name) == 0) {
            std::memcpy(name, static_cast<const char*>(entry->d_name), std::strlen(name));
            return true;
        }
    }
    return false;
}

} // namespace

HostPath::HostPath(const char* path) noexcept {
    if (path != nullptr)
        map(path);
}

HostPath::HostPath(const WCHAR* path) noexcept {
    char narrow[PATH_MAX];
    const std::u16string_view wide = path != nullptr ? path : u"";
    const std::size_t length = utf8FromUtf16(wide, narrow, sizeof narrow).units;
    if (length < sizeof narrow)
        map({narrow, length});
}

HostPath HostPath::folder() const noexcept {
    HostPath parent(*this);
    char* const separator = std::strrchr(parent.text, '/');
    if (separator == nullptr)
        std::strcpy(parent.text, ".");
    else
        separator[separator == parent.text ? 1 : 0] = '\0';
    return parent;
}

void HostPath::map(std::string_view path) noexcept {
    const std::string_view root = isDrivePath(path) ? hostRoot() : "";
    if (root.size() + path.size() + 4 > sizeof text || (isDrivePath(path) && root.empty()))
        return;
    if (!isDrivePath(path)) {
        text[path.copy(text, path.size())] = '\0';
        return;
    }
    char* end = text + root.copy(text, root.size());
    *end++ = '/';
    *end++ = static_cast<char>(std::tolower(static_cast<unsigned char>(path[0])));
    *end++ = '/';
    for (const char unit : path.substr(2)) {
        const char mapped = unit == '\\' ? '/' : unit;
        if (mapped != '/' || end[-1] != '/')
            *end++ = mapped;
    }
    *end = '\0';
    if (::access(text, F_OK) != 0)
        matchCase(root.size() + 3);
}

/// Changes the case of the components from `begin` on to that of the existing files.
void HostPath::matchCase(std::size_t begin) noexcept {
    char* name = text + begin;
    while (*name != '\0') {
        char* const end = ::strchrnul(name, '/');
        const char separator = std::exchange(*end, '\0');
        bool found = ::access(text, F_OK) == 0;
        if (!found) {
            name[-1] = '\0';
            found = findEntry(text, name);
            name[-1] = '/';
        }
        *end = separator;
        if (!found)
            return;
        name = separator == '\0' ? end : end + 1;
    }
}

std::string_view hostRoot() noexcept {
    const char* const value = std::getenv("WINHOST_ROOT");
    std::string_view root = value != nullptr ? value : "";
    while (root.size() > 1 && root.back() == '/')
        root.remove_suffix(1);
    return root;
}

} // namespace winhost
