// The contract for C is that for C++, slot by slot, and its table in the documents says the same; a client
// and a plug-in in C work with the library.
#include "support/Machine.h"
#include "support/TestFiles.h"
#include "vykel/PluginEntryPoints.h"
#include "vykel/vykel_c.h"
#include "vykel/vykeldevenum.h"
#include <cstddef>
#include <cstring>
#include <gtest/gtest.h>

namespace vykeltest {

/// InC<T> is the type that the header for C has in place of T. These functions are only declared.
template <class T>
T inC(T*);
vykel_StatusBlock* inC(vykel::StatusBlock**);
vykel_Device* inC(vykel::IDevice**);
vykel_DeviceList* inC(vykel::IDeviceList**);
template <class T>
using InC = decltype(inC(static_cast<T*>(nullptr)));
template <class Result, class Object, class... Arguments>
auto slotInC(Result (Object::*)(Arguments...)) -> InC<Result> (*)(InC<Object*>, InC<Arguments>...);

namespace {

/// The offset of a virtual function's slot; a pointer to one holds it, plus one.
template <class Member>
std::size_t offsetOf(Member member) {
    std::ptrdiff_t offset = 0;
    std::memcpy(&offset, &member, sizeof offset);
    return static_cast<std::size_t>(offset - 1);
}

void expectRow(std::initializer_list<std::string> cells) {
    static const std::string document = readFile(VYKEL_DOCS "/binary-interface.md");
    std::string row = "|";
    for (const std::string& cell : cells)
        row += " " + cell + " |";
    EXPECT_NE(document.find("\n" + row), std::string::npos) << row;
}

TEST(CInterface, HasTheLayoutOfCpp) {
#define EXPECT_SLOT(object, name)                                                                            \
    static_assert(std::is_same_v<decltype(vykel_##object##Operations::name),                                 \
                                 decltype(slotInC(&vykel::I##object::name))>);                               \
    EXPECT_EQ(offsetOf(&vykel::I##object::name), offsetof(vykel_##object##Operations, name)) << #name;       \
    expectRow({std::to_string(offsetof(vykel_##object##Operations, name) / sizeof(void*)),                   \
               std::to_string(offsetof(vykel_##object##Operations, name)), "`" #name "`"})
    EXPECT_SLOT(DeviceList, getVersion);
    EXPECT_SLOT(DeviceList, isStale);
    EXPECT_SLOT(DeviceList, refresh);
    EXPECT_SLOT(DeviceList, getCount);
    EXPECT_SLOT(DeviceList, getDevice);
    EXPECT_SLOT(DeviceList, release);
    EXPECT_SLOT(DeviceList, attach);
    EXPECT_SLOT(DeviceList, detach);
    EXPECT_SLOT(Device, getVersion);
    EXPECT_SLOT(Device, getPersistentToken);
    EXPECT_SLOT(Device, getSortKey);
    EXPECT_SLOT(Device, setNumber);
    EXPECT_SLOT(Device, getNumber);
    EXPECT_SLOT(Device, reserved1);
    EXPECT_SLOT(Device, reserved2);
    EXPECT_SLOT(Device, getAlias);
    EXPECT_SLOT(Device, setAlias);
    static_assert(sizeof(vykel_DeviceListOperations) == 8 * 8 && sizeof(vykel_DeviceOperations) == 9 * 8);
    static_assert(sizeof(vykel_DeviceList) == 8 && sizeof(vykel_Device) == 8);
#define EXPECT_FIELD(name)                                                                                   \
    static_assert(std::is_same_v<decltype(vykel_StatusBlock::name), decltype(vykel::StatusBlock::name)> &&   \
                  offsetof(vykel_StatusBlock, name) == offsetof(vykel::StatusBlock, name));                  \
    expectRow({std::to_string(offsetof(vykel_StatusBlock, name)),                                            \
               std::to_string(sizeof(vykel_StatusBlock::name)), "`" #name "`"})
    EXPECT_FIELD(structSize);
    EXPECT_FIELD(code);
    EXPECT_FIELD(component);
    EXPECT_FIELD(file);
    EXPECT_FIELD(line);
    EXPECT_FIELD(reserved);
    EXPECT_EQ(sizeof(vykel_StatusBlock), vykel_makeStatusBlock().structSize);
    EXPECT_EQ(sizeof(vykel_StatusBlock), sizeof(vykel::StatusBlock));
    EXPECT_EQ(VYKEL_NO_DEVICE_NUMBER, vykel::noDeviceNumber);
#define EXPECT_CODE(nameInC, name)                                                                           \
    static_assert(VYKEL_##nameInC == vykel::toInteger(vykel::StatusCode::name));                             \
    expectRow({std::to_string(VYKEL_##nameInC), "`" #name "`"})
    EXPECT_CODE(SUCCESS, Success);
    EXPECT_CODE(CONFIGURATION_FAULT, ConfigurationFault);
    EXPECT_CODE(MEMORY_FULL, MemoryFull);
    EXPECT_CODE(GENERAL_FAULT, GeneralFault);
    EXPECT_CODE(BAD_CAST, BadCast);
    EXPECT_CODE(INVALID_PARAMETER, InvalidParameter);
    EXPECT_CODE(RESOURCE_NOT_FOUND, ResourceNotFound);
    EXPECT_CODE(OS_FAULT, OsFault);
    EXPECT_CODE(PLUGIN_NOT_INITIALIZED, PluginNotInitialized);
    EXPECT_CODE(VERSION_MISMATCH, VersionMismatch);
}

TEST(CInterface, ServesAClientInC) {
    Machine machine;
    EXPECT_EQ(runProgram("client_c", "").output, "");
    machine.install("simulated", "left");
    writeFile(machine.folder() / "left.devices", "token=b sortKey=1\ntoken=a alias=A\n");
    machine.setConfigurationFolder(false);
    ProgramResult client = runProgram("client_c", "2>&1");
    EXPECT_EQ(client.exitCode, 4);
    EXPECT_EQ(client.output.find("no number  takes no alias  b"), 0u) << client.output;
    EXPECT_NE(client.output.find("-50209"), std::string::npos) << client.output;
    machine.setConfigurationFolder(true);
    client = runProgram("client_c", "");
    EXPECT_EQ(client.exitCode, 0);
    EXPECT_EQ(client.output.find("KEL1  takes no alias  b"), 0u) << client.output;
    machine.setPluginsKey(false);
    EXPECT_EQ(runProgram("client_c", "").exitCode, 1);
}

#ifndef VYKEL_SANITIZED // the sanitizer asks every object for its type in C++
TEST(CInterface, TakesAPluginInC) {
    Machine machine;
    machine.install("lamp", "lamp");
    const ProgramResult client = runProgram("client_c", "");
    EXPECT_EQ(client.output.find("KEL0  takes no alias  lamp-1"), 0u) << client.output;
    const ProgramResult check =
        runProgram("vykeldev", "check \"" + (programFolder() / "lamp").string() + pluginExtension + "\"");
    EXPECT_EQ(check.exitCode, 4) << check.output; // it warns only
}
#endif

} // namespace
} // namespace vykeltest
