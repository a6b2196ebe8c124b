#include "doctor/Probe.h"

#include "DeviceCollection.h"
#include "doctor/Platform.h"
#include "errors/Exception.h"
#include "PellumKelPlugin.h"
#include "PluginCall.h"
#include <exception>
#include <iostream>

namespace vykeldev::doctor {
namespace {

// A plug-in may write to standard output, too. Only what follows this is the probe's.
constexpr const char* mark = "{\"vykeldevProbe\":1,";

/// Writes the child's lines; each is on its way before the next step can end the process.
class Teller final : public vykel::PluginLoadObserver {
public:
    void onStep(vykel::PluginLoadStep step) override {
        static constexpr Step steps[] = {Step::Load, Step::EntryPoint, Step::Initialise};
        begin(steps[static_cast<std::size_t>(step)]);
    }
    void begin(Step step) { tell("begun", nameOf(step)); }
    void tell(const char* key, const Json& value) {
        std::cout << mark << Json(key) << ':' << dumped(value, -1) << '}' << std::endl;
    }
};

Json numbersOf(const std::vector<vykel::IDevice*>& devices) {
    Json numbers = Json::array();
    vykel::callPlugin([&] {
        for (vykel::IDevice* const device : devices) {
            const std::uint32_t number = device->getNumber();
            numbers.push_back(number == vykel::noDeviceNumber ? Json() : Json(number));
        }
    });
    return numbers;
}

void walk(vykel::PellumKelPlugin& plugin, Teller& teller) {
    plugin.load(&teller);
    teller.begin(Step::List);
    vykel::DeviceListPtr list = plugin.getInterface();
    if (list == nullptr) {
        teller.tell("listMissing", true);
        return;
    }
    teller.begin(Step::Refresh);
    std::vector<vykel::IDevice*> devices;
    const std::int32_t code = vykel::collectDevices(*list, devices);
    if (code < 0)
        teller.tell("error", {{"code", code}, {"document", ""}});
    else
        teller.tell("deviceNumbers", numbersOf(devices));
    teller.begin(Step::Unload);
    list.reset();
    plugin.unload();
}

void take(const Json& line, ProbeResult& result) {
    if (line.contains("begun") && !result.failed()) {
        result.step = stepOf(line["begun"].get<std::string>()).value_or(result.step);
    } else if (line.contains("error")) {
        result.error = makeLibraryError(line["error"].at("code").get<std::int32_t>(),
                                        line["error"].at("document").get<std::string>());
    } else if (line.contains("deviceNumbers")) {
        for (const Json& number : line["deviceNumbers"])
            result.deviceNumbers.push_back(number.is_null() ? std::nullopt
                                                            : std::optional(number.get<std::uint32_t>()));
    } else if (line.contains("thrown")) {
        result.thrown = line["thrown"].get<std::string>();
    }
    result.listMissing = result.listMissing || line.contains("listMissing");
    result.done = result.done || line.contains("done");
}

} // namespace

void runProbe(const std::string& path) {
    silenceCrashes();
    Teller teller;
    vykel::PellumKelPlugin plugin(path);
    try {
        walk(plugin, teller);
    } catch (const vyerr::Exception& exception) {
        teller.tell("error", {{"code", exception.status()->code}, {"document", exception.errorInfoJson()}});
    } catch (const std::exception& exception) {
        teller.tell("thrown", exception.what());
    }
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
