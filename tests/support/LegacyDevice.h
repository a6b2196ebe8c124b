#ifndef TESTS_LEGACYDEVICE_H
#define TESTS_LEGACYDEVICE_H

#include "DeviceLists.h"
#include "vykel/IDevice.h"
#include <list>
#include <string>
#include <utility>

namespace vykeltest {

/// A device in memory that writes down what it is asked. One with the token "null" has none; one with the
/// token "fades" takes no alias after it was asked for its alias once.
class LegacyDevice : public vykel::IDevice {
public:
    LegacyDevice(std::uint32_t deviceNumber, const char* deviceAlias, std::string deviceToken = "")
        : number(deviceNumber), takesAlias(deviceAlias != nullptr), alias(takesAlias ? deviceAlias : ""),
          token(std::move(deviceToken)) {}
    virtual ~LegacyDevice() = default;

    std::int32_t getVersion() override { return 0; }
    const char* getPersistentToken(std::uint32_t format) override {
        calls += 't' + std::to_string(format);
        return token != "null" ? token.c_str() : nullptr;
    }
    std::uint32_t getSortKey() override { return 0; }
    void setNumber(std::uint32_t given, vykel::StatusBlock*) override { number = given; }
    std::uint32_t getNumber() override {
        calls += 'n';
        return number;
    }
    const char* getAlias() override {
        calls += 'a';
        const bool answers = std::exchange(takesAlias, takesAlias && token != "fades"); // after one answer
        return answers ? alias.c_str() : nullptr;
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

/// The devices of two lists, of which the first is empty.
template <class Device>
vykel::DeviceTable tableOf(std::list<Device>& devices) {
    vykel::DeviceTable table(2);
    for (Device& device : devices)
        table[1].push_back(&device);
    return table;
}

} // namespace vykeltest

#endif
