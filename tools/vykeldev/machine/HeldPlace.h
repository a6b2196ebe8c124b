#ifndef VYKELDEV_SUPPORT_HELDPLACE_H
#define VYKELDEV_SUPPORT_HELDPLACE_H

#include "system/Files.h"
#include <string>

/// Folders and files that only administrators control, though any user may have made something in their place
/// before. Every question about a place is asked of its handle, never of its path a second time. Paths are
/// UTF-8.
namespace vykeldev {

/// A folder or a file that setup looks after.
struct Place {
    bool isFolder;
    std::string path;
};

/// What to do after most failures here.
constexpr const char* repeatSetup = "Remove the cause and try again, as administrator.";

/// Whether administrators or the system own an open folder or file. Throws Failure.
bool belongsToAdministrators(HANDLE file, const std::string& path);

/// Opens a place; null when there is nothing. Throws Failure, also when a link, a folder in place of a file,
/// a file in place of a folder or a file with several names is there.
FileHandle openPlace(const Place& place, DWORD access);

/// Gives an open place these rights and this owner: a security descriptor in the system's text form. What is
/// in a folder keeps its rights. `opened` needs WRITE_DAC and WRITE_OWNER. Throws Failure.
void setRights(const Place& place, HANDLE opened, const char* rights);

/// A place that is there and stays what it is: while this lives, nobody can rename or delete it.
class HeldPlace {
public:
    /// Makes the place with these rights when it is missing. What is there must belong to administrators
    /// when it is a folder, or when this call is the beginning of changes; otherwise it is removed and made
    /// anew, or refused when it cannot be removed, such as a folder that is not empty. `folder` is the place
    /// above it, or null. Throws Failure.
    HeldPlace(const Place& wanted, const HeldPlace* folder, const char* rights, bool changes);
    /// Removes the place when it is new and keep() was not called.
    ~HeldPlace();
    HeldPlace(const HeldPlace&) = delete;
    HeldPlace& operator=(const HeldPlace&) = delete;

    bool isNew() const noexcept { return made; }
    void keep() noexcept { made = false; }

    /// As above. The place must be new, or held for changes.
    void setRights(const char* rights) const;

private:
    /// Once it is done, the destructor runs even when the other constructor throws.
    explicit HeldPlace(const Place& wanted) : place(wanted) {}

    BOOL remove() const;
    void make(const char* rights);
    void requireInside(const HeldPlace& folder) const;

    const Place place;
    FileHandle handle;
    bool made = false;
};

} // namespace vykeldev

#endif
