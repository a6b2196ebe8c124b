#include "doctor/Probe.h"

#include "DeviceCollection.h"
#include "errors/Exception.h"
#include "pellumkelddk/user/FileLock.h"
#include "PellumKelPlugin.h"
#include "platform/DoctorPlatform.h"
#include "PluginCall.h"
#include "vykel/StatusBlock.h"
#include <algorithm>
#include <cstdio>
#include <exception>

namespace vykeldev::doctor {
namespace {

// A plug-in may write to standard output, too. Only what follows this is the probe's.
constexpr const char* mark = "{\"vykeldevProbe\":1,";

/// Writes the child's lines; each is on its way before the next step can end the process.
class Teller {
public:
    void begin(Step step) { tell("begun", nameOf(step)); }
    void tell(const char* key, const Json& value) {
        const std::string line = mark + Json(key).dump() + ':' + textOf(value, -1) + "}\n";
        std::fputs(line.c_str(), output.get());
        std::fflush(output.get());
    }

private:
    vykel::FileStream output = duplicateOutput(); // a plug-in may close standard output
};

/// In several lines, because long ones are cut off.
void tellNumbers(const std::vector<vykel::IDevice*>& devices, Teller& teller) {
    constexpr std::size_t numbersPerLine = 1000;
    for (std::size_t begin = 0; begin < devices.size(); begin += numbersPerLine) {
        const std::size_t end = std::min(begin + numbersPerLine, devices.size());
        Json numbers = Json::array();
        vykel::callPlugin([&] {
            for (std::size_t i = begin; i < end; ++i) {
                const std::uint32_t number = devices[i]->getNumber();
                numbers.push_back(number == vykel::noDeviceNumber ? Json() : Json(number));
            }
        });
        teller.tell("deviceNumbers", numbers);
    }
}

/// After a collection that failed: whether a device was refused, and not the refresh.
bool isDeviceRefused(vykel::IDeviceList& list, const std::vector<vykel::IDevice*>& devices) {
    return !devices.empty() || vykel::callPlugin([&] {
        vykel::StatusBlock block = vykel::makeStatusBlock();
        if (list.getCount() > 0)
            list.getDevice(0, 0, &block);
        return block.code < 0;
    });
}

void walk(vykel::PellumKelPlugin& plugin, vykel::DeviceListPtr& list, Teller& teller) {
    teller.begin(Step::Load);
    plugin.loadLibrary();
    teller.begin(Step::EntryPoint);
    plugin.resolveEntryPoints();
    teller.begin(Step::Initialise);
    plugin.initialize();
    teller.begin(Step::List);
    list = plugin.getInterface();
    if (list == nullptr) {
        teller.tell("listMissing", true);
        return;
    }
    teller.begin(Step::Refresh);
    std::vector<vykel::IDevice*> devices;
    const std::int32_t code = vykel::collectDevices(*list, devices);
    tellNumbers(devices, teller);
    if (code >= 0)
        return;
    if (isDeviceRefused(*list, devices))
        teller.tell("deviceRefused", true);
    teller.tell("error", {{"code", code}, {"document", ""}});
}

void take(const Json& line, ProbeResult& result) {
    if (line.contains("begun"))
        result.step = stepOf(line["begun"].get<std::string>()).value_or(result.step);
    if (line.contains("error") || line.contains("thrown") || line.contains("listMissing"))
        result.failedStep = result.step;
    if (line.contains("error"))
        result.error = makeLibraryError(line["error"].at("code").get<std::int32_t>(),
                                        line["error"].at("document").get<std::string>());
    if (line.contains("thrown"))
        result.thrown = line["thrown"].get<std::string>();
    if (line.contains("deviceNumbers")) {
        for (const Json& number : line["deviceNumbers"])
            result.deviceNumbers.push_back(number.is_null() ? std::nullopt
                                                            : std::optional(number.get<std::uint32_t>()));
    }
    result.listMissing = result.listMissing || line.contains("listMissing");
    result.deviceRefused = result.deviceRefused || line.contains("deviceRefused");
    result.done = result.done || line.contains("done");
}

} // namespace

void runProbe(const std::string& path) {
    silenceCrashes();
    Teller teller;
    vykel::PellumKelPlugin plugin(path);
    vykel::DeviceListPtr list;
    try {
        walk(plugin, list, teller);
    } catch (const vyerr::Exception& exception) {
        teller.tell("error", {{"code", exception.status()->code}, {"document", exception.errorInfoJson()}});
    } catch (const std::exception& exception) {
        teller.tell("thrown", exception.what());
    }
    teller.begin(Step::Unload);
    list.reset();
    plugin.unload();
    teller.tell("done", true);
}

ProbeResult probePlugin(const std::string& path, std::chrono::milliseconds limit) {
    ProbeResult result;
    result.end = runChild({probeCommand, "--", path}, limit, [&result](const std::string& text) {
        const std::size_t begin = text.find(mark);
        const Json line = Json::parse(begin == std::string::npos ? "" : text.substr(begin), nullptr, false);
        try {
            if (line.is_object())
                take(line, result);
        } catch (const Json::exception&) {
            // A plug-in that imitates the probe's lines fools only itself.
        }
    });
    return result;
}

} // namespace vykeldev::doctor
