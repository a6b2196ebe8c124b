#include "doctor/Examination.h"

#include "child/Probe.h"
#include "machine/Findings.h"
#include "system/Failure.h"
#include "system/Paths.h"
#include "system/Text.h"

namespace vykeldev::doctor {
namespace {

/// Why the system refused to load the library, which `look` may explain.
Obstacle judgeLoad(const ProbeResult& probe, const std::string& path, const std::optional<Obstacle>& look) {
    const DWORD error = probe.error->system.value_or(ERROR_SUCCESS);
    const std::string seen = " (" + probe.obstacle->detail + ")";
    if (error == ERROR_PROC_NOT_FOUND)
        return {&finding::dependencyMissing, Step::Dependency,
                "a library that it needs is of another version and lacks a function" + seen};
    const bool isMissing = error == ERROR_MOD_NOT_FOUND;
    // A library of another architecture is a bad format, too.
    if (look && (look->kind != &finding::dependencyMissing || isMissing || error == ERROR_BAD_EXE_FORMAT))
        return {look->kind, look->step, look->detail + seen, look->remedyOf};
    const std::string oddity = pathOddity(path);
    if (!isAbsolutePath(path) && (isMissing || !oddity.empty()))
        return {&finding::fileMissing, Step::Path, "the relative path leads to no file" + seen + oddity,
                &finding::pathRelative};
    if (isMissing)
        return {&finding::dependencyMissing, Step::Dependency,
                "a library that it needs cannot be loaded" + seen};
    return *probe.obstacle;
}

/// Why a step failed, by what the child reported and by the look at the file.
Obstacle judgeFailure(const ProbeResult& probe, const PluginAccount& plugin,
                      const std::optional<Obstacle>& look) {
    Obstacle obstacle = *probe.obstacle;
    if (obstacle.kind == &finding::loadRefused)
        return judgeLoad(probe, *plugin.path, look);
    if (obstacle.kind != &finding::entryPointMissing)
        return obstacle;
    if (look && look->step != Step::Dependency)
        return *look; // a program, which the system loads like a library
    if (plugin.image && !plugin.image->missingExports.empty())
        obstacle.detail = "missing: " + joined(plugin.image->missingExports, ", ");
    return obstacle;
}

/// A child that ended before all steps were done, or badly after them.
std::optional<Obstacle> judgeEnd(const ProbeResult& probe, std::chrono::milliseconds limit) {
    const std::string before = probe.error ? ", after " + describe(*probe.error) : "";
    const auto& end = probe.child.end;
    if (!end)
        return Obstacle{&finding::pluginHung, probe.step,
                        "no answer within " + std::to_string(limit.count()) + " ms" + before};
    if (end->crashed)
        return Obstacle{&finding::pluginCrashed, probe.step, crashText(end->code) + before};
    if (probe.done)
        return std::nullopt;
    return Obstacle{&finding::pluginExited, probe.step, "exit code " + std::to_string(end->code) + before};
}

/// Names the type of the value as the cause of an obstacle, or as odd when there is none.
void judgeType(PluginAccount& plugin, Findings& findings) {
    static constexpr const char* names[] = {"REG_NONE",   "REG_SZ",      "REG_EXPAND_SZ",
                                            "REG_BINARY", "REG_DWORD",   "REG_DWORD_BIG_ENDIAN",
                                            "REG_LINK",   "REG_MULTI_SZ"};
    if (plugin.valueType == REG_SZ)
        return;
    const bool isNamed = plugin.valueType < std::size(names);
    const std::string type = concat("the value's type is ", plugin.valueType,
                                    isNamed ? concat(" (", names[plugin.valueType], ')') : "");
    const FindingKind* const kind = plugin.obstacle ? plugin.obstacle->kind : nullptr;
    // These may come from bytes that were taken for the text of a path.
    if (kind == &finding::fileMissing || kind == &finding::pathEmpty || kind == &finding::loadRefused)
        plugin.obstacle = {&finding::valueType, Step::RegistryValue, type + ": " + plugin.obstacle->detail};
    else
        findings.push_back({&finding::valueNotPlain, plugin.name, type});
}

/// Looks and probes. Nothing when the plug-in loaded.
std::optional<Obstacle> judge(PluginAccount& plugin, const DoctorOptions& options, Findings& findings) {
    if (plugin.path->size() > maxPathBytes) // no command line can hold it
        return Obstacle{&finding::fileMissing, Step::Path, "no file can have a path of this length"};
    const std::optional<Obstacle> look = lookAtFile(*plugin.path, plugin.image);
    const std::chrono::milliseconds limit(static_cast<long long>(options.timeout * 1000));
    ProbeResult probe;
    try {
        probe = probePlugin(*plugin.path, limit, options.devices);
    } catch (const Stopped&) {
        throw;
    } catch (const Failure& failure) {
        return Obstacle{&finding::probeImpossible, Step::Load,
                        failure.what() + (failure.meaning.empty() ? "" : ": " + failure.meaning)};
    }
    plugin.milliseconds = probe.child.duration.count();
    plugin.error = probe.error;
    for (const Finding& oddity : probe.oddities)
        findings.push_back({oddity.kind, plugin.name, oddity.detail});
    std::optional<Obstacle> obstacle = judgeEnd(probe, limit);
    if (!obstacle && probe.obstacle)
        obstacle = judgeFailure(probe, plugin, look);
    else if (obstacle && obstacle->step == Step::Load && look)
        obstacle->detail += "; " + look->detail;
    if (!obstacle || obstacle->kind == &finding::deviceRefused)
        plugin.devices = std::move(probe.devices);
    return obstacle;
}

} // namespace

void examine(PluginAccount& plugin, const DoctorOptions& options, Findings& findings) {
    const bool isText = plugin.valueType == REG_SZ; // otherwise that is the cause, and was reported
    if (isText && !plugin.path->empty() && !isAbsolutePath(*plugin.path) && pathOddity(*plugin.path).empty())
        findings.push_back({&finding::pathRelative, plugin.name, *plugin.path});
    plugin.obstacle = judge(plugin, options, findings);
    judgeType(plugin, findings);
    if (const std::optional<Obstacle>& obstacle = plugin.obstacle)
        findings.push_back({obstacle->kind, plugin.name,
                            obstacle->detail + " (at: " + nameOf(obstacle->step) + ")", 0,
                            obstacle->remedyOf != nullptr ? obstacle->remedyOf->remedyFor(plugin.name) : ""});
}

} // namespace vykeldev::doctor
