#ifndef TESTS_TRANSFERMACHINE_H
#define TESTS_TRANSFERMACHINE_H

#include "DeviceTable.h"
#include "errors/CatchLadder.h"
#include "support/Codes.h"
#include "support/Machine.h"
#include "support/TestFiles.h"
#include "TraditionalAliasTransferManager.h"
#include "vykel/IDevice.h"
#include <list>
#include <string>

namespace vykeltest {

/// A device in memory that writes down what it is asked.
class LegacyDevice : public vykel::IDevice {
public:
    LegacyDevice(std::uint32_t deviceNumber, const char* deviceAlias, std::string deviceToken = "")
        : number(deviceNumber), takesAlias(deviceAlias != nullptr), alias(takesAlias ? deviceAlias : ""),
          token(std::move(deviceToken)) {}
    virtual ~LegacyDevice() = default;

    std::int32_t getVersion() override { return 0; }
    const char* getPersistentToken(std::uint32_t format) override {
        calls += 't' + std::to_string(format);
        return token.c_str();
    }
    std::uint32_t getSortKey() override { return 0; }
    void setNumber(std::uint32_t given, vykel::StatusBlock*) override { number = given; }
    std::uint32_t getNumber() override {
        calls += 'n';
        return number;
    }
    const char* getAlias() override {
        calls += 'a';
        return takesAlias ? alias.c_str() : nullptr;
    }
    void setAlias(const char* text, std::int32_t one, std::int32_t zero,
                  vykel::StatusBlock* status) override {
        calls += one == 1 && zero == 0 && status->structSize == 8 && status->code == 0 ? 'S' : '?';
        if (refusal < 0)
            status->code = refusal;
        else
            alias = text;
    }

    std::uint32_t number;
    bool takesAlias;
    std::string alias;
    std::string token;
    std::int32_t refusal = 0;
    std::string calls;
};

/// A machine with a legacy file.
struct TransferMachine {
    Machine machine;
    fs::path iniFile = machine.configurationFolder() / "vykel.ini";
    fs::path temporaryFile = machine.configurationFolder() / "vykel.TMP";
};

/// An INI text as the library saves it: CRLF, and an empty line after each section.
inline std::string saved(const std::string& text) {
    std::string result;
    for (const char byte : text)
        result +=
            byte == '\n' ? "\r\n" : (byte == '[' && !result.empty() ? "\r\n" : "") + std::string(1, byte);
    return text.empty() ? "" : result + "\r\n";
}

/// The devices of two lists, of which the first is empty.
template <class Device>
vykel::DeviceTable tableOf(std::list<Device>& devices) {
    vykel::DeviceTable table(2);
    for (Device& device : devices)
        table[1].push_back(&device);
    return table;
}

/// Runs one transfer on the machine's legacy file.
inline vykel::StatusBlock transfer(const vykel::DeviceTable& table) {
    vykel::StatusBlock block = vykel::makeStatusBlock();
    vyerr::runGuarded(&block, {"", 0},
                      [&] { vykel::TraditionalAliasTransferManager().transferAliases(table); });
    return block;
}

} // namespace vykeltest

#endif
