#ifndef TESTS_FAKEPLUGINS_H
#define TESTS_FAKEPLUGINS_H

#include "support/FakeHost.h"
#include <map>
#include <string>
#include <vector>

namespace vykeltest {

/// The test's side of all fake plug-ins in its process: what they see, what they do, what they were asked.
class FakePlugins final : public FakeHost {
public:
    FakePlugins();

    /// By plug-in.
    std::map<std::string, std::vector<FakeDevice>> devicesOf;
    /// By call, for example "a.refresh", "a.getDevice(2)", or "a.getDevice" for every argument. Other calls
    /// are ordinary.
    std::map<std::string, std::int32_t> answers;
    bool logging = true;

    /// The calls since the last time, in order, separated by blanks; all of them, or those of some
    /// operations.
    std::string takeLog(const std::vector<std::string>& operations = {});

    Answer call(const char* plugin, const char* operation, std::int64_t argument) override;
    FakeDevice* devices(const char* plugin, std::uint32_t& count) override;

private:
    std::vector<std::pair<std::string, std::string>> log; // operation and text
};

} // namespace vykeltest

#endif
