#include "child/Probe.h"

#include "DeviceLists.h"
#include "errors/Exception.h"
#include "machine/Findings.h"
#include "output/Failures.h"
#include "PellumKelPlugin.h"
#include "PluginCall.h"
#include "system/DisplayText.h"
#include "system/Text.h"
#include "vykel/StatusBlock.h"
#include <algorithm>
#include <chrono>
#include <exception>
#include <map>
#include <optional>
#include <set>

namespace vykeldev {
namespace {

using Clock = std::chrono::steady_clock;

constexpr std::chrono::seconds slow(2);
constexpr const char* allTexts = "all texts";

/// Reports each kind of finding about the texts of devices once.
struct TextCheck {
    Reporter& reporter;
    std::map<std::string, std::size_t> holders[2] = {}; ///< Of the tokens of each format.
    std::set<std::string> reported = {};

    void report(const FindingKind& kind, const std::string& detail) {
        if (reported.insert(kind.id).second)
            reporter.reportCut({{"oddity", kind.id}, {"detail", detail}});
    }
    /// A token of the device at an index, or null.
    void checkToken(const char* token, std::uint32_t format, std::size_t index) {
        const std::string place = concat("the token of device ", index, " in format ", format);
        checkEncoding(token, place);
        if (token == nullptr)
            return report(finding::tokenMissing, place + " is null");
        const auto [holder, isNew] = holders[format - 1].emplace(token, index);
        if (!isNew)
            report(finding::tokenDuplicate,
                   concat(place, " is also that of device ", holder->second, ": '", printable(token), "'"));
    }
    /// A text of a device, or null.
    void checkEncoding(const char* text, const std::string& place) {
        if (text != nullptr && !isUtf8(text))
            report(finding::textNotUtf8, concat(place, " is '", printable(text), "'"));
    }
};

/// Calls all getters, so that their failures show, and reports each device. Texts are read only for a second,
/// unless they are wanted: no client reads them all.
void reportDevices(const std::vector<vykel::IDevice*>& devices, bool wantsTexts, Reporter& reporter) {
    const auto textOrNull = [](const char* text) { return text != nullptr ? Json(text) : Json(); };
    const Clock::time_point end = Clock::now() + std::chrono::seconds(1);
    TextCheck check{reporter};
    vykel::callPlugin([&] {
        for (std::size_t i = 0; i < devices.size(); ++i) {
            vykel::IDevice& device = *devices[i];
            device.getVersion();
            device.getSortKey();
            Json account = {
                {"token", nullptr}, {"number", numberOrNull(device.getNumber())}, {"alias", nullptr}};
            if (wantsTexts || Clock::now() < end) {
                account["token"] = textOrNull(device.getPersistentToken(1));
                check.checkToken(device.getPersistentToken(1), 1, i);
                check.checkToken(device.getPersistentToken(2), 2, i);
                account["alias"] = textOrNull(device.getAlias());
                check.checkEncoding(device.getAlias(), concat("the alias of device ", i));
            }
            reporter.reportCut({{"device", account}});
        }
    });
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

/// Refreshes a list as the library does, and reports its devices.
void refresh(vykel::IDeviceList& list, bool wantsTexts, Reporter& reporter) {
    std::vector<vykel::IDevice*> devices;
    const auto start = Clock::now();
    vykel::callPlugin([&] { list.isStale(); }); // as the library does before every refresh
    const std::int32_t code = vykel::collectDevices(list, devices);
    const std::chrono::duration<double> duration = Clock::now() - start;
    reportDevices(devices, wantsTexts, reporter);
    if (duration > slow)
        reporter.report({{"oddity", finding::refreshSlow.id},
                         {"detail", concat("refreshing took ", duration.count(), " seconds")}});
    if (code >= 0)
        return;
    const bool isRefused = isDeviceRefused(list, devices);
    const FindingKind& failure = isRefused ? finding::deviceRefused : finding::refreshFailed;
    reporter.report({{"failure", failure.id}, {"error", {{"code", code}, {"document", ""}}}});
    if (isRefused || duration >= slow)
        return;
    // Once more, because the library's blocks have no room for what a plug-in says beside its code.
    vykel::StatusBlock block = vykel::makeStatusBlock();
    vykel::callPlugin([&] { list.refresh(&block); });
    reporter.report({{"origin", originText(block)}});
}

/// The child's side.
void probe(const std::vector<std::string>& arguments, Reporter& reporter) {
    vykel::PellumKelPlugin plugin(arguments.at(0));
    vykel::DeviceListPtr list;
    const FindingKind* failure = nullptr; // what an error of the step means
    const auto begin = [&](Step step, const FindingKind& kind) {
        failure = &kind;
        reporter.report({{"begun", step}});
    };
    try {
        begin(Step::Load, finding::loadRefused);
        plugin.loadLibrary();
        begin(Step::EntryPoint, finding::entryPointMissing);
        plugin.resolveEntryPoints();
        begin(Step::Initialise, finding::pluginRefused);
        plugin.initialize();
        begin(Step::List, finding::pluginRefused);
        list = plugin.getInterface();
        if (list == nullptr) {
            reporter.report({{"failure", finding::listMissing.id}});
        } else {
            begin(Step::Refresh, finding::refreshFailed);
            refresh(*list, arguments.at(1) == allTexts, reporter);
        }
    } catch (const vyerr::Exception& exception) {
        reporter.reportCut(
            {{"failure", failure->id},
             {"error", {{"code", exception.status()->code}, {"document", exception.errorInfoJson()}}}});
    } catch (const std::exception& exception) {
        reporter.reportCut({{"failure", finding::pluginThrew.id}, {"detail", exception.what()}});
    }
    reporter.report({{"begun", Step::Unload}});
    list.reset();
    plugin.unload();
}

/// The parent's side.
void take(const Json& line, ProbeResult& result) {
    result.step = line.value("begun", result.step);
    result.done = line.value("done", result.done);
    if (line.contains("device"))
        result.devices.push_back(line["device"]);
    std::string detail = line.value("detail", "");
    if (line.contains("error")) {
        result.error = makeLibraryError(line["error"].at("code"), line["error"].at("document"));
        detail = describe(*result.error);
    }
    for (const FindingKind* const kind : finding::all) {
        if (kind->id == line.value("oddity", ""))
            result.oddities.push_back({kind, "", detail});
        if (kind->id == line.value("failure", ""))
            result.obstacle = Obstacle{kind, result.step, detail};
    }
    if (result.obstacle)
        result.obstacle->detail += line.value("origin", "");
}

} // namespace

const ChildTask probeTask = {"probe-plugin", probe};

ProbeResult probePlugin(const std::string& path, std::chrono::milliseconds limit, bool wantsTexts) {
    ProbeResult result;
    TaskRun child(probeTask, {path, wantsTexts ? allTexts : "some texts"},
                  [&result](const Json& report) { take(report, result); });
    result.child = child.finish(limit, TaskRun::Limit::WholeTask);
    return result;
}

} // namespace vykeldev
