#include "child/Probe.h"
#include "doctor/Checks.h"
#include "machine/Dependencies.h"
#include "machine/Findings.h"
#include "system/Failure.h"
#include "system/Files.h"
#include "system/Loader.h"
#include "system/Paths.h"
#include "system/System.h"
#include "system/Text.h"

namespace vykeldev::doctor {
namespace {

/// Why a plug-in is not loaded.
struct Verdict {
    const FindingKind* kind;
    Step step;
    std::string detail;
    std::string remedy = {}; ///< Empty: that of the kind.
};

std::string describe(const LibraryError& error) {
    std::string text = "code " + std::to_string(error.code);
    if (error.system)
        text += ", system error " + std::to_string(*error.system);
    return text + (error.systemText.empty() ? "" : ": " + error.systemText);
}

/// What is odd about a path in the registry, as "; ..." or nothing.
std::string pathOddity(const std::string& path) {
    if (path.find('"') != std::string::npos)
        return "; the quotes are part of the value: remove them";
    if (path.front() == ' ' || path.back() == ' ')
        return "; the value begins or ends with a blank: remove it";
    const std::size_t percent = path.find('%');
    if (percent != std::string::npos && path.find('%', percent + 1) != std::string::npos)
        return "; the variable between the percent signs is not replaced";
    return "";
}

/// Looks at the file without loading it or what it imports. Returns why a load will fail, or nothing.
std::optional<Verdict> lookAtHeaders(PluginAccount& plugin) {
    const std::string& path = *plugin.path;
    std::string bytes;
    if (path.empty())
        return Verdict{&finding::pathEmpty, Step::Path, "the path is empty"};
    if (isFolder(path))
        return Verdict{&finding::pathEmpty, Step::Path, "this is a folder"};
    if (!isAbsolutePath(path))
        return std::nullopt; // only the loader knows which file it is
    if (!isOrdinaryFile(path))
        return Verdict{&finding::fileNotALibrary, Step::File, "this is a device or a pipe"};
    if (const DWORD error = readFile(path, bytes); error != ERROR_SUCCESS) {
        const bool missing = error == ERROR_FILE_NOT_FOUND || error == ERROR_PATH_NOT_FOUND;
        return Verdict{missing ? &finding::fileMissing : &finding::fileUnreadable, Step::File,
                       systemErrorText(error) + pathOddity(path),
                       missing && !pathOddity(path).empty() ? finding::pathRelative.remedyFor(plugin.name)
                                                            : ""};
    }
    plugin.image = readNativeImage(bytes);
    if (!plugin.image)
        return std::nullopt;
    if (plugin.image->kind == LibraryImage::Kind::NotALibrary)
        return Verdict{&finding::fileNotALibrary, Step::File, plugin.image->detail};
    if (plugin.image->kind == LibraryImage::Kind::OtherMachine)
        return Verdict{&finding::architectureWrong, Step::Architecture, plugin.image->detail};
    return std::nullopt;
}

/// Looks also for the libraries that it imports.
std::optional<Verdict> lookAtFile(PluginAccount& plugin) {
    if (std::optional<Verdict> verdict = lookAtHeaders(plugin); verdict || !plugin.image)
        return verdict;
    const auto bad = findBadDependencies(*plugin.image, *plugin.path);
    if (bad.empty())
        return std::nullopt;
    return Verdict{&finding::dependencyMissing, Step::Dependency, joined(bad, "; ")};
}

Verdict judgeLoad(const LibraryError& error, const PluginAccount& plugin,
                  const std::optional<Verdict>& look) {
    const std::string system = " (" + describe(error) + ")";
    if (error.system == ERROR_PROC_NOT_FOUND)
        return {&finding::dependencyMissing, Step::Dependency,
                "a library that it needs is of another version and lacks a function" + system};
    const bool lacksLibrary = look && look->kind == &finding::dependencyMissing;
    // A library of another architecture is a bad format, too.
    if (look &&
        (!lacksLibrary || error.system == ERROR_MOD_NOT_FOUND || error.system == ERROR_BAD_EXE_FORMAT))
        return {look->kind, look->step, look->detail + system, look->remedy};
    const std::string oddity = pathOddity(*plugin.path);
    if (!isAbsolutePath(*plugin.path) && (error.system == ERROR_MOD_NOT_FOUND || !oddity.empty()))
        return {&finding::fileMissing, Step::Path, "the relative path leads to no file" + system + oddity,
                finding::pathRelative.remedyFor(plugin.name)};
    if (error.system == ERROR_MOD_NOT_FOUND)
        return {&finding::dependencyMissing, Step::Dependency,
                "a library that it needs cannot be loaded" + system};
    return {&finding::loadRefused, Step::Load, describe(error)};
}

Verdict judgeEntryPoints(const LibraryError& error, const PluginAccount& plugin,
                         const std::optional<Verdict>& look) {
    if (look && look->step != Step::Dependency)
        return *look; // a program, which the system loads like a library
    const bool known = plugin.image && !plugin.image->missingExports.empty();
    return {&finding::entryPointMissing, Step::EntryPoint,
            known ? "missing: " + joined(plugin.image->missingExports, ", ") : describe(error)};
}

/// A step that the library or the plug-in ended with an error.
Verdict judgeFailure(const ProbeResult& probe, const PluginAccount& plugin,
                     const std::optional<Verdict>& look) {
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
std::optional<Verdict> judgeEnd(const ProbeResult& probe, std::chrono::milliseconds limit) {
    const std::string before = probe.error ? ", after " + describe(*probe.error) : "";
    const auto& end = probe.child.end;
    if (!end)
        return Verdict{&finding::pluginHung, probe.step,
                       "no answer within " + std::to_string(limit.count()) + " ms" + before};
    if (end->crashed)
        return Verdict{&finding::pluginCrashed, probe.step, crashText(end->code) + before};
    if (probe.done)
        return std::nullopt;
    return Verdict{&finding::pluginExited, probe.step, "exit code " + std::to_string(end->code) + before};
}

/// Looks and probes. Nothing when the plug-in loaded.
std::optional<Verdict> judge(PluginAccount& plugin, std::chrono::milliseconds limit, Findings& findings) {
    if (plugin.path->size() > maxPathBytes) // no command line can hold it
        return Verdict{&finding::fileMissing, Step::Path, "no file can have a path of this length"};
    const std::optional<Verdict> look = lookAtFile(plugin);
    ProbeResult probe;
    try {
        probe = probePlugin(*plugin.path, limit, !plugin.deviceList.is_null());
    } catch (const Failure& failure) {
        return Verdict{&finding::probeImpossible, Step::Load,
                       failure.what() + (failure.meaning.empty() ? "" : ": " + failure.meaning)};
    }
    plugin.milliseconds = probe.child.duration.count();
    plugin.error = probe.error;
    for (const Finding& oddity : probe.oddities)
        findings.push_back({oddity.kind, plugin.name, oddity.detail});
    std::optional<Verdict> verdict = judgeEnd(probe, limit);
    if (!verdict && probe.failedStep)
        verdict = judgeFailure(probe, plugin, look);
    else if (verdict && verdict->step == Step::Load && look)
        verdict->detail += "; " + look->detail;
    if (!verdict || verdict->kind == &finding::deviceRefused) {
        plugin.deviceNumbers = std::move(probe.deviceNumbers);
        if (!plugin.deviceList.is_null())
            plugin.deviceList = std::move(probe.deviceList);
    }
    return verdict;
}

} // namespace

std::string describeFlaw(const std::string& path) {
    PluginAccount plugin;
    plugin.path = path;
    if (const std::optional<Verdict> verdict = lookAtHeaders(plugin))
        return verdict->detail;
    if (!plugin.image || plugin.image->missingExports.empty())
        return "";
    return "the library does not export " + joined(plugin.image->missingExports, ", ");
}

void examine(PluginAccount& plugin, std::chrono::milliseconds limit, Findings& findings) {
    const bool isText = plugin.valueType == REG_SZ; // otherwise that is the cause, and was reported
    if (isText && !plugin.path->empty() && !isAbsolutePath(*plugin.path) && pathOddity(*plugin.path).empty())
        findings.push_back({&finding::pathRelative, plugin.name, *plugin.path});
    const std::optional<Verdict> verdict = judge(plugin, limit, findings);
    if (!verdict) {
        plugin.outcome = Outcome::Loaded;
        return;
    }
    plugin.outcome = verdict->kind == &finding::pluginRefused ? Outcome::Refused : Outcome::Failed;
    plugin.failedStep = verdict->step;
    plugin.detail = verdict->detail;
    findings.push_back({verdict->kind, plugin.name, verdict->detail + " (at: " + nameOf(verdict->step) + ")",
                        0, verdict->remedy});
}

} // namespace vykeldev::doctor
