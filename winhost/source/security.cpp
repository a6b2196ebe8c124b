#include "winhost/security.h"

#include "aclapi.h"
#include "descriptors.h"
#include "errorNumbers.h"
#include "faultCheck.h"
#include "sddl.h"
#include "securityDescriptor.h"
#include <cerrno>
#include <cstdlib>
#include <string>
#include <sys/stat.h>

using winhost::Call;
using winhost::SecurityDescriptor;

namespace {

/// What the entry "FLAGS;RIGHTS;;;BU" of a list lets all others do.
mode_t modeOfUsers(const std::string& entry) {
    const std::string flags = entry.substr(0, entry.find(';'));
    if (flags.find("IO") != std::string::npos)
        return 0;
    const unsigned long rights = std::strtoul(entry.c_str() + flags.size() + 1, nullptr, 16);
    const bool reads = (rights & 0x01U) != 0;
    const bool writes = (rights & 0x02U) != 0;
    const bool executes = (rights & 0x20U) != 0;
    return (reads ? 044 : 0) | (writes ? 022 : 0) | (executes ? 011 : 0);
}

mode_t modeOfText(const std::string& text) {
    constexpr const char* allow = "(A;";
    mode_t mode = 0700;
    for (std::size_t at = text.find(allow); at != std::string::npos; at = text.find(allow, at)) {
        at += 3;
        const std::string entry = text.substr(at, text.find(')', at) - at);
        if (entry.size() > 5 && entry.compare(entry.size() - 5, 5, ";;;BU") == 0)
            mode |= modeOfUsers(entry);
    }
    return mode;
}

/// Memory that LocalFree frees; null with the last error set when there is none.
SecurityDescriptor* allocate(const SecurityDescriptor& value) noexcept {
    auto* const made = static_cast<SecurityDescriptor*>(std::malloc(sizeof value));
    if (made == nullptr) {
        SetLastError(ERROR_NOT_ENOUGH_MEMORY);
        return nullptr;
    }
    winhost::countResources(+1);
    *made = value;
    return made;
}

} // namespace

extern "C" {

BOOL ConvertStringSecurityDescriptorToSecurityDescriptorW(LPCWSTR text, DWORD,
                                                          PSECURITY_DESCRIPTOR* descriptor, LPDWORD) {
    if (winhost::fails(Call::ConvertStringSecurityDescriptorToSecurityDescriptorW))
        return FALSE;
    return winhost::guardMemory(FALSE, [&] {
        const std::u16string wide(text);
        *descriptor = allocate({0, modeOfText({wide.begin(), wide.end()})});
        return *descriptor != nullptr ? TRUE : FALSE;
    });
}

BOOL SetKernelObjectSecurity(HANDLE object, SECURITY_INFORMATION, PSECURITY_DESCRIPTOR descriptor) {
    if (winhost::fails(Call::SetKernelObjectSecurity))
        return FALSE;
    const int file = winhost::descriptorOf(object);
    struct stat status = {};
    const bool known = ::fstat(file, &status) == 0;
    const mode_t allowed = S_ISDIR(status.st_mode) ? 0777 : 0666;
    if (known && ::fchmod(file, winhost::modeOf(descriptor) & allowed) == 0)
        return TRUE;
    winhost::setErrorFromErrno();
    return FALSE;
}

DWORD GetSecurityInfo(HANDLE object, SE_OBJECT_TYPE, SECURITY_INFORMATION, PSID* owner, PSID*, PACL*, PACL*,
                      PSECURITY_DESCRIPTOR* descriptor) {
    if (const DWORD fault = winhost::faultOf(Call::GetSecurityInfo))
        return fault;
    struct stat status = {};
    if (::fstat(winhost::descriptorOf(object), &status) != 0)
        return winhost::windowsError(errno);
    SecurityDescriptor* const made = allocate({status.st_uid, 0});
    if (made == nullptr)
        return ERROR_NOT_ENOUGH_MEMORY;
    *owner = &made->owner;
    *descriptor = made;
    return ERROR_SUCCESS;
}
}
