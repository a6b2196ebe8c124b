// Prints the binary contract as this compiler sees it in the public headers: compared with layout.txt.

#include "vykel/PluginEntryPoints.h"
#include "vykel/vykeldevenum.h"
#include <cstddef>
#include <cstdio>
#include <cstring>

/// The slot of a virtual function: a pointer to one holds its offset in the table, plus one.
template <class Member>
static unsigned slotOf(Member member) {
    std::ptrdiff_t offset = 0;
    std::memcpy(&offset, &member, sizeof offset);
    return static_cast<unsigned>((offset - 1) / static_cast<std::ptrdiff_t>(sizeof(void*)));
}

#define OFFSET(field)                                                                                        \
    std::printf("StatusBlock.%s at %u\n", #field, unsigned(offsetof(vykel::StatusBlock, field)))
#define SLOT(operation) std::printf("slot %u %s\n", slotOf(&vykel::operation), #operation)
#define CODE(name) std::printf("%d %s\n", int(vykel::toInteger(vykel::StatusCode::name)), #name)

int main() {
    std::printf("StatusBlock: %u bytes\n", unsigned(sizeof(vykel::StatusBlock)));
    OFFSET(structSize);
    OFFSET(code);
    OFFSET(component);
    OFFSET(file);
    OFFSET(line);
    OFFSET(reserved);
    std::printf("IDeviceList: %u bytes\n", unsigned(sizeof(vykel::IDeviceList)));
    SLOT(IDeviceList::getVersion);
    SLOT(IDeviceList::isStale);
    SLOT(IDeviceList::refresh);
    SLOT(IDeviceList::getCount);
    SLOT(IDeviceList::getDevice);
    SLOT(IDeviceList::release);
    SLOT(IDeviceList::attach);
    SLOT(IDeviceList::detach);
    std::printf("IDevice: %u bytes\n", unsigned(sizeof(vykel::IDevice)));
    SLOT(IDevice::getVersion);
    SLOT(IDevice::getPersistentToken);
    SLOT(IDevice::getSortKey);
    SLOT(IDevice::setNumber);
    SLOT(IDevice::getNumber);
    SLOT(IDevice::reserved1);
    SLOT(IDevice::reserved2);
    SLOT(IDevice::getAlias);
    SLOT(IDevice::setAlias);
    std::printf("noDeviceNumber: %u\n", unsigned(vykel::noDeviceNumber));
    CODE(Success);
    CODE(ConfigurationFault);
    CODE(MemoryFull);
    CODE(GeneralFault);
    CODE(BadCast);
    CODE(InvalidParameter);
    CODE(ResourceNotFound);
    CODE(OsFault);
    CODE(PluginNotInitialized);
    CODE(VersionMismatch);
}
