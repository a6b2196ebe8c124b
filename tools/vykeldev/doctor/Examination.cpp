#include "doctor/Examination.h"

#include "doctor/Files.h"
#include "doctor/Platform.h"
#include "doctor/Probe.h"
#include "Failure.h"
#include "Registrations.h"
#include "System.h"
#include "Text.h"

namespace vykeldev::doctor {
namespace {

/// Why a plug-in is not loaded.
struct Verdict {
    FindingId id;
    Step step;
    std::string detail;
};

std::string joined(const std::vector<std::string>& texts) {
    std::string result;
    for (const std::string& text : texts)
        result += (result.empty() ? "" : ", ") + text;
    return result;
}

std::string describe(const LibraryError& error) {
    std::string text = "code " + std::to_string(error.code);
    if (error.system)
        text += ", system error " + std::to_string(*error.system);
    return text + (error.systemText.empty() ? "" : ": " + error.systemText);
}

void findMissingImports(LibraryImage& image, const std::string& folder) {
    for (const std::string& name : image.imports) {
        if (!isImportFound(name, image, folder))
            image.missingImports.push_back(name);
    }
}

/// Looks at the file without loading it. What it finds tells why a load will fail, or nothing.
std::optional<Verdict> lookAtFile(PluginAccount& plugin) {
    const std::string& path = *plugin.path;
    std::string bytes;
    if (path.empty() || isFolder(path))
        return Verdict{FindingId::PathEmpty, Step::Path,
                       path.empty() ? "the path is empty" : "this is a folder"};
    if (!isAbsolutePath(path))
        return std::nullopt; // only the loader knows which file it is
    if (const DWORD error = readFile(path, bytes); error != ERROR_SUCCESS) {
        const bool missing = error == ERROR_FILE_NOT_FOUND || error == ERROR_PATH_NOT_FOUND;
        return Verdict{missing ? FindingId::FileMissing : FindingId::FileUnreadable, Step::File,
                       systemErrorText(error)};
    }
    LibraryImage& image = plugin.image.emplace(readNativeImage(bytes));
    if (image.kind == LibraryImage::Kind::NotALibrary)
        return Verdict{FindingId::FileNotALibrary, Step::File, image.detail};
    if (image.kind == LibraryImage::Kind::OtherMachine)
        return Verdict{FindingId::ArchitectureWrong, Step::Architecture, image.detail};
    findMissingImports(image, folderOf(path));
    if (!image.missingImports.empty()) {
        std::string detail = "not found: " + joined(image.missingImports);
        for (const std::string& name : image.missingImports) {
            if (GetFileAttributesW(toWide(folderOf(path) + "\\" + name).c_str()) != INVALID_FILE_ATTRIBUTES)
                detail += "; " + name + " lies beside the plug-in, where the system does not look";
        }
        return Verdict{FindingId::DependencyMissing, Step::Dependency, detail};
    }
    return std::nullopt;
}

Verdict judgeLoad(const LibraryError& error, const PluginAccount& plugin,
                  const std::optional<Verdict>& look) {
    if (look)
        return {look->id, look->step, look->detail + " (" + describe(error) + ")"};
    if (!isAbsolutePath(*plugin.path))
        return {FindingId::FileMissing, Step::Path,
                "the relative path leads nowhere (" + describe(error) + ")"};
    if (error.system == ERROR_MOD_NOT_FOUND)
        return {FindingId::DependencyMissing, Step::Dependency,
                "a library that it needs cannot be loaded itself (" + describe(error) + ")"};
    return {FindingId::LoadRefused, Step::Load, describe(error)};
}

/// A step that the library or the plug-in ended with an error.
Verdict judgeFailure(const ProbeResult& probe, const PluginAccount& plugin,
                     const std::optional<Verdict>& look) {
    if (probe.listMissing)
        return {FindingId::ListMissing, probe.step, ""};
    if (probe.thrown)
        return {FindingId::PluginThrew, probe.step, *probe.thrown};
    switch (probe.step) {
    case Step::Load:
        return judgeLoad(*probe.error, plugin, look);
    case Step::EntryPoint:
        return {FindingId::EntryPointMissing, probe.step,
                "missing: " + (plugin.image ? joined(plugin.image->missingExports) : describe(*probe.error))};
    case Step::Initialise:
    case Step::List:
        return {FindingId::PluginRefused, probe.step, describe(*probe.error)};
    default:
        return {FindingId::RefreshFailed, probe.step, describe(*probe.error)};
    }
}

/// A child that ended before all steps were done, or after.
std::optional<Verdict> judgeEnd(const ProbeResult& probe, std::chrono::milliseconds limit) {
    switch (probe.end.end) {
    case ChildOutcome::End::Crashed:
        return Verdict{FindingId::PluginCrashed, probe.step, crashText(probe.end.code)};
    case ChildOutcome::End::TimedOut:
        return Verdict{FindingId::PluginHung, probe.step,
                       "no answer within " + std::to_string(limit.count()) + " ms"};
    case ChildOutcome::End::Exited:
        break;
    }
    if (probe.done)
        return std::nullopt;
    return Verdict{FindingId::PluginExited, probe.step, "exit code " + std::to_string(probe.end.code)};
}

/// Looks and probes. Nothing when the plug-in loaded.
std::optional<Verdict> judge(PluginAccount& plugin, std::chrono::milliseconds limit) {
    const std::optional<Verdict> look = lookAtFile(plugin);
    ProbeResult probe;
    try {
        probe = probePlugin(*plugin.path, limit);
    } catch (const Failure& failure) { // for example a path too long for any command line
        return look ? look : Verdict{FindingId::LoadRefused, Step::Load, failure.what()};
    }
    plugin.milliseconds = probe.end.duration.count();
    plugin.error = probe.error;
    std::optional<Verdict> verdict =
        probe.failed() ? judgeFailure(probe, plugin, look) : judgeEnd(probe, limit);
    if (!verdict)
        plugin.deviceNumbers = std::move(probe.deviceNumbers);
    return verdict;
}

} // namespace

void examine(PluginAccount& plugin, std::chrono::milliseconds limit, Findings& findings) {
    if (!plugin.path->empty() && !isAbsolutePath(*plugin.path))
        findings.push_back({FindingId::PathRelative, plugin.name, *plugin.path});
    const std::optional<Verdict> verdict = judge(plugin, limit);
    if (!verdict) {
        plugin.outcome = Outcome::Loaded;
        return;
    }
    plugin.outcome = verdict->id == FindingId::PluginRefused ? Outcome::Refused : Outcome::Failed;
    plugin.failedStep = verdict->step;
    plugin.detail = verdict->detail;
    findings.push_back({verdict->id, plugin.name, verdict->detail + " (at: " + nameOf(verdict->step) + ")"});
}

} // namespace vykeldev::doctor
