#include "doctor/Examination.h"

#include "child/Probe.h"
#include "machine/Findings.h"
#include "system/Failure.h"
#include "system/Paths.h"
#include "system/Text.h"

namespace vykeldev::doctor {
namespace {

std::string describe(const LibraryError& error) {
    std::string text = "code " + std::to_string(error.code);
    if (error.system)
        text += ", system error " + std::to_string(*error.system);
    return text + (error.systemText.empty() ? "" : ": " + error.systemText);
}

Obstacle judgeLoad(const LibraryError& error, const PluginAccount& plugin,
                   const std::optional<Obstacle>& look) {
    const std::string system = " (" + describe(error) + ")";
    if (error.system == ERROR_PROC_NOT_FOUND)
        return {&finding::dependencyMissing, Step::Dependency,
                "a library that it needs is of another version and lacks a function" + system};
    const bool lacksLibrary = look && look->kind == &finding::dependencyMissing;
    // A library of another architecture is a bad format, too.
    if (look &&
        (!lacksLibrary || error.system == ERROR_MOD_NOT_FOUND || error.system == ERROR_BAD_EXE_FORMAT))
        return {look->kind, look->step, look->detail + system, look->remedyOf};
    const std::string oddity = pathOddity(*plugin.path);
    if (!isAbsolutePath(*plugin.path) && (error.system == ERROR_MOD_NOT_FOUND || !oddity.empty()))
        return {&finding::fileMissing, Step::Path, "the relative path leads to no file" + system + oddity,
                &finding::pathRelative};
    if (error.system == ERROR_MOD_NOT_FOUND)
        return {&finding::dependencyMissing, Step::Dependency,
                "a library that it needs cannot be loaded" + system};
    return {&finding::loadRefused, Step::Load, describe(error)};
}

Obstacle judgeEntryPoints(const LibraryError& error, const PluginAccount& plugin,
                          const std::optional<Obstacle>& look) {
    if (look && look->step != Step::Dependency)
        return *look; // a program, which the system loads like a library
    const bool known = plugin.image && !plugin.image->missingExports.empty();
    return {&finding::entryPointMissing, Step::EntryPoint,
            known ? "missing: " + joined(plugin.image->missingExports, ", ") : describe(error)};
}

/// A step that the library or the plug-in ended with an error.
Obstacle judgeFailure(const ProbeResult& probe, const PluginAccount& plugin,
                      const std::optional<Obstacle>& look) {
    const Step step = *probe.failedStep;
    if (probe.listMissing)
        return {&finding::listMissing, step, ""};
    if (probe.thrown)
        return {&finding::pluginThrew, step, *probe.thrown};
    if (step == Step::Load)
        return judgeLoad(*probe.error, plugin, look);
    if (step == Step::EntryPoint)
        return judgeEntryPoints(*probe.error, plugin, look);
    const bool refused = step == Step::Initialise || step == Step::List;
    return {refused               ? &finding::pluginRefused
            : probe.deviceRefused ? &finding::deviceRefused
                                  : &finding::refreshFailed,
            step, describe(*probe.error) + probe.origin};
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

/// The name of a value's type in the registry's tools, in brackets; empty when it has none.
std::string typeName(DWORD type) {
    static constexpr const char* names[] = {"REG_NONE",   "REG_SZ",      "REG_EXPAND_SZ",
                                            "REG_BINARY", "REG_DWORD",   "REG_DWORD_BIG_ENDIAN",
                                            "REG_LINK",   "REG_MULTI_SZ"};
    return type < std::size(names) ? concat(" (", names[type], ')') : std::string();
}

/// Whether an obstacle may come from bytes that were taken for the text of a path.
bool isOfPath(const Obstacle& obstacle) {
    return obstacle.kind == &finding::fileMissing || obstacle.kind == &finding::pathEmpty ||
           obstacle.kind == &finding::loadRefused;
}

/// Names the type of the value as the cause of an obstacle, or as odd when there is none.
void judgeType(const PluginAccount& plugin, std::optional<Obstacle>& obstacle, Findings& findings) {
    const std::string type = concat("the value's type is ", plugin.valueType, typeName(plugin.valueType));
    if (plugin.valueType == REG_SZ)
        return;
    if (obstacle && isOfPath(*obstacle))
        obstacle = {&finding::valueType, Step::RegistryValue, type + ": " + obstacle->detail};
    else
        findings.push_back({&finding::valueNotPlain, plugin.name, type});
}

/// Looks and probes. Nothing when the plug-in loaded.
std::optional<Obstacle> judge(PluginAccount& plugin, const ExaminationOptions& options, Findings& findings) {
    if (plugin.path->size() > maxPathBytes) // no command line can hold it
        return Obstacle{&finding::fileMissing, Step::Path, "no file can have a path of this length"};
    const std::optional<Obstacle> look = lookAtFile(*plugin.path, plugin.image);
    ProbeResult probe;
    try {
        probe = probePlugin(*plugin.path, options.limit, options.wantsTexts);
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
    std::optional<Obstacle> obstacle = judgeEnd(probe, options.limit);
    if (!obstacle && probe.failedStep)
        obstacle = judgeFailure(probe, plugin, look);
    else if (obstacle && obstacle->step == Step::Load && look)
        obstacle->detail += "; " + look->detail;
    if (!obstacle || obstacle->kind == &finding::deviceRefused)
        plugin.devices = std::move(probe.devices);
    return obstacle;
}

} // namespace

void examine(PluginAccount& plugin, const ExaminationOptions& options, Findings& findings) {
    const bool isText = plugin.valueType == REG_SZ; // otherwise that is the cause, and was reported
    if (isText && !plugin.path->empty() && !isAbsolutePath(*plugin.path) && pathOddity(*plugin.path).empty())
        findings.push_back({&finding::pathRelative, plugin.name, *plugin.path});
    std::optional<Obstacle> obstacle = judge(plugin, options, findings);
    judgeType(plugin, obstacle, findings);
    if (!obstacle) {
        plugin.outcome = PluginOutcome::Loaded;
        return;
    }
    plugin.outcome =
        obstacle->kind == &finding::pluginRefused ? PluginOutcome::Refused : PluginOutcome::Failed;
    plugin.failedStep = obstacle->step;
    plugin.detail = obstacle->detail;
    findings.push_back({obstacle->kind, plugin.name,
                        obstacle->detail + " (at: " + nameOf(obstacle->step) + ")", 0,
                        obstacle->remedyOf != nullptr ? obstacle->remedyOf->remedyFor(plugin.name) : ""});
}

} // namespace vykeldev::doctor
