#include "machine/HeldPlace.h"

#include "system/DisplayText.h"
#include "system/Failure.h"
#include "system/System.h"
#include "system/Text.h"
#include <windows.h>
// After windows.h, which they need.
#include <aclapi.h>
#include <sddl.h>

namespace vykeldev {
namespace {

std::string nameOf(const Place& place) {
    return std::string(place.isFolder ? "the folder '" : "the file '") + printable(place.path) + "'";
}

/// Something that is in the place of another.
Failure intruder(const Place& place, const std::string& what, const std::string& meaning,
                 const std::string& action) {
    return {"'" + printable(place.path) + "' " + what, meaning, action + " and try again, as administrator."};
}

Failure foreignOwner(const Place& place, DWORD error) {
    return intruder(place, "belongs to another user",
                    "Its owner may change it at any time, whatever rights it gets. It cannot be removed: " +
                        systemErrorText(error),
                    place.isFolder ? "Look at what is in it, move it away"
                                   : "Close the programs that hold it open");
}

vybase::LocalMemory<void> makeDescriptor(const char* rights) {
    PSECURITY_DESCRIPTOR descriptor = nullptr;
    if (!ConvertStringSecurityDescriptorToSecurityDescriptorW(toWide(rights).c_str(), SDDL_REVISION_1,
                                                              &descriptor, nullptr))
        throw systemFailure("preparing the rights of a folder", GetLastError(), repeatSetup);
    return vybase::LocalMemory<void>(descriptor);
}

/// The path of what is open, without any link.
WideString finalPath(HANDLE file, const Place& place) {
    WideString path = pathFrom([file](LPWSTR buffer, DWORD size) {
        return GetFinalPathNameByHandleW(file, buffer, size, VOLUME_NAME_NT);
    });
    if (path.empty())
        throw systemFailure("looking for " + nameOf(place), GetLastError(), repeatSetup);
    return path;
}

} // namespace

bool belongsToAdministrators(HANDLE file, const std::string& path) {
    PSID owner = nullptr;
    PSECURITY_DESCRIPTOR descriptor = nullptr;
    const DWORD error = GetSecurityInfo(file, SE_FILE_OBJECT, OWNER_SECURITY_INFORMATION, &owner, nullptr,
                                        nullptr, nullptr, &descriptor);
    if (error != ERROR_SUCCESS)
        throw systemFailure("asking who owns '" + printable(path) + "'", error, repeatSetup);
    const vybase::LocalMemory<void> memory(descriptor);
    return isAdministrator(owner);
}

FileHandle openPlace(const Place& place, DWORD access) {
    FileHandle file = openItself(place.path, access);
    BY_HANDLE_FILE_INFORMATION facts = {};
    if (!file || !GetFileInformationByHandle(file.get(), &facts)) {
        const DWORD error = GetLastError();
        if (!file && (error == ERROR_FILE_NOT_FOUND || error == ERROR_PATH_NOT_FOUND))
            return nullptr;
        throw systemFailure("opening " + nameOf(place), error, repeatSetup);
    }
    if ((facts.dwFileAttributes & FILE_ATTRIBUTE_REPARSE_POINT) != 0)
        throw intruder(place, "is a link",
                       "Any user may have made it, to have the rights of another place changed.",
                       "Remove the link, not what it leads to,");
    const bool isFolder = (facts.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
    if (isFolder != place.isFolder)
        throw intruder(place, isFolder ? "is a folder" : "is a file",
                       isFolder ? "A file of this name is needed." : "A folder of this name is needed.",
                       isFolder ? "Move the folder away" : "Move the file away");
    if (!isFolder && facts.nNumberOfLinks > 1)
        throw intruder(place, "has a second name",
                       "Any user may have given it this one, to have the rights of another file changed.",
                       "Delete it under this name");
    return file;
}

void setRights(const Place& place, HANDLE opened, const char* rights) {
    const vybase::LocalMemory<void> descriptor = makeDescriptor(rights);
    // SetSecurityInfo would also go through all that is in a folder, by path and through second names.
    constexpr SECURITY_INFORMATION parts =
        OWNER_SECURITY_INFORMATION | DACL_SECURITY_INFORMATION | PROTECTED_DACL_SECURITY_INFORMATION;
    if (!SetKernelObjectSecurity(opened, parts, descriptor.get()))
        throw systemFailure("setting the rights of " + nameOf(place), GetLastError(), repeatSetup);
}

// Why nobody can put something else in a place between a look at it and its use:
//
// GENERIC_READ takes part in sharing, so the missing FILE_SHARE_DELETE counts: while the handle is open,
// nobody renames or deletes the place. When somebody has it open in a way that would let him, opening it
// fails.
//
// A handle keeps its rights, whatever is set later. So a place that another user made, who may have it open,
// is never taken over: it is removed and made anew.
//
// An empty folder can be made a link while it is open. What is opened in it then lies elsewhere: its final
// path shows that before its rights are changed. At worst an empty folder or file was made there, and is
// removed again. Once there is a lock file in the folder, which users cannot delete, the folder cannot become
// a link.
HeldPlace::HeldPlace(const Place& wanted, const HeldPlace* folder, const char* rights, bool changes)
    : HeldPlace(wanted) {
    constexpr DWORD changing = GENERIC_READ | WRITE_DAC | WRITE_OWNER;
    handle = openPlace(place, changes ? changing : GENERIC_READ);
    if (handle && (place.isFolder || changes) && !belongsToAdministrators(handle.get(), place.path)) {
        handle.reset();
        if (!remove())
            throw foreignOwner(place, GetLastError());
    }
    if (!handle) {
        make(rights);
        handle = openPlace(place, changing);
        if (!handle || !belongsToAdministrators(handle.get(), place.path))
            throw foreignOwner(place, ERROR_ALREADY_EXISTS); // he was quicker
    }
    if (folder != nullptr)
        requireInside(*folder);
}

HeldPlace::~HeldPlace() {
    handle.reset();
    if (made)
        remove();
}

BOOL HeldPlace::remove() const {
    const WideString path = toWide(place.path);
    return place.isFolder ? RemoveDirectoryW(path.c_str()) : DeleteFileW(path.c_str());
}

void HeldPlace::make(const char* rights) {
    const vybase::LocalMemory<void> descriptor = makeDescriptor(rights);
    SECURITY_ATTRIBUTES security = {sizeof security, descriptor.get(), FALSE};
    if (!place.isFolder)
        handle = openFile(place.path, GENERIC_READ, CREATE_NEW, FILE_ATTRIBUTE_NORMAL,
                          FILE_SHARE_READ | FILE_SHARE_WRITE, &security);
    made = handle || (place.isFolder && CreateDirectoryW(toWide(place.path).c_str(), &security));
    const DWORD error = GetLastError();
    if (!made && error != ERROR_ALREADY_EXISTS && error != ERROR_FILE_EXISTS)
        throw systemFailure("making " + nameOf(place), error, repeatSetup);
}

void HeldPlace::requireInside(const HeldPlace& folder) const {
    const WideString upper = finalPath(folder.handle.get(), folder.place);
    const WideString own = finalPath(handle.get(), place);
    if (own.size() <= upper.size() || own.compare(0, upper.size(), upper) != 0 ||
        own.find_first_of(toWide("\\/"), upper.size() + 1) != WideString::npos)
        throw intruder(folder.place, "is a link",
                       "It became one while 'vykeldev setup' was running. No rights were changed elsewhere.",
                       "Remove the link, not what it leads to,");
}

void HeldPlace::setRights(const char* rights) const {
    vykeldev::setRights(place, handle.get(), rights);
}

} // namespace vykeldev
