#include "child/PreviewTask.h"

#include "child/Preview.h"
#include "ConfigurationFolder.h"
#include "machine/Locks.h"
#include "output/Failures.h"
#include "pellumkelddk/user/FileLock.h"
#include "system/DisplayText.h"
#include "system/Paths.h"
#include "system/System.h"
#include "TraditionalAliasTransferManager.h"

namespace vykeldev {
namespace {

constexpr const char* action = "previewing the transfer of aliases";

const char* nameOf(EntryFate fate) noexcept {
    static constexpr const char* names[] = {"moves",     "dropped",   "no-device", "not-local",
                                            "unreached", "malformed", "blocked"};
    return names[static_cast<std::size_t>(fate)];
}

std::string unreachedText(const EntryPreview& entry) {
    if (!entry.stays)
        return "never used; removed with its section: " + entry.detail;
    const bool later = entry.flaw == Flaw::Duplicate; // it counts once the other is gone
    return (later ? "not used this time; stays: " : "never used; stays: ") + entry.detail;
}

std::string fateText(const EntryPreview& entry) {
    const std::string device = "device KEL" + std::to_string(entry.device);
    switch (entry.fate) {
    case EntryFate::Moves:
        if (entry.alias == "")
            return "removed: the alias is empty, so " + device + " stays without one";
        return "moves to " + device +
               (entry.stays ? "; stays because an entry of the same name is removed in its place" : "");
    case EntryFate::Dropped:
        return device + " has an alias; dropped";
    case EntryFate::NoDevice:
        return entry.stays ? "no matching device; stays"
                           : "no matching device; removed because another entry of the same name was moved";
    case EntryFate::NotLocal:
        return "not local; stays";
    case EntryFate::Unreached:
        return unreachedText(entry);
    case EntryFate::Malformed:
        return "malformed: " + entry.detail;
    case EntryFate::Blocked:
        break;
    }
    return "waits until the malformed entries are corrected";
}

Json toJson(const EntryPreview& entry) {
    return {{"line", entry.line},
            {"alias", entry.alias},
            {"target", entry.target},
            {"outcome", nameOf(entry.fate)},
            {"device", numberOrNull(entry.device)},
            {"detail", textOrNull(entry.detail)},
            {"stays", entry.stays},
            {"text", fateText(entry)}};
}

void report(const Preview& preview, Reporter& reporter) {
    for (const EntryPreview& entry : preview.entries)
        reporter.report({{"entry", toJson(entry)}});
    reporter.report(
        {{"document", {{"exists", true}, {"layout", layoutText(preview.layout)}, {"fails", preview.fails}}}});
}

/// Keeps transfers from running while the stream is open. Makes no lock file: without one nobody has
/// transferred yet. Throws Failure when a transfer does not end, vyerr::Exception when the folder is unknown.
vykel::FileStream pauseTransfers() {
    const std::string path = vykel::getConfigurationFolder() + "vykel.lck";
    vykel::FileStream stream(std::fopen(path.c_str(), "rb"));
    if (stream)
        lockOrThrow(stream.get(), path);
    return stream;
}

LegacyFile readWhilePaused(const std::string& path) {
    const vykel::FileStream pause = pauseTransfers();
    return LegacyFile(path);
}

/// Whether there is a file. Throws Failure when it cannot be read.
bool isRead(const LegacyFile& file, const std::string& path) {
    const int result = file.result;
    if (result == 0 || result == vyini::IniNoFile)
        return result == 0;
    const std::string what = "reading '" + printable(path) + "' failed with " + std::to_string(result);
    const std::string meaning = "Every refresh leaves the file as it is and moves no alias.";
    if (result == vyini::IniWideText)
        throw Failure(what + ": it is UTF-16 or UTF-32", meaning, "Save it as UTF-8.");
    if (isFolder(path))
        throw Failure(what + ": it is a folder", meaning, "Move the folder away.");
    throw Failure(what, meaning, "Close the program that holds it, and let this user read it.");
}

/// The child's side.
void runPreview(const std::vector<std::string>&, Reporter& reporter) {
    const std::string path = vykel::TraditionalAliasTransferManager().iniPath();
    reporter.report({{"document", {{"file", path}, {"link", textOrNull(linkText(path))}}}});
    const LegacyFile file = readWhilePaused(path);
    if (!isRead(file, path))
        return;
    reporter.beginStep("loading the plug-ins");
    LoadedPlugins plugins;
    try {
        reporter.beginStep("refreshing the devices");
        const PreviewDevices devices(plugins.manager);
        report(previewTransfer(file, devices.table(), devices.all()), reporter);
        reporter.beginStep("unloading the plug-ins");
    } catch (...) {
        throw currentFailure(action); // a plug-in's exception must not outlive its plug-in's code
    }
}

} // namespace

const char* layoutText(vykel::AliasLayout layout) noexcept {
    static constexpr const char* names[] = {"resource names", "tokens of format 1", "tokens of format 2"};
    return names[static_cast<std::size_t>(layout)];
}

const ChildTask previewTask = {"aliases", runPreview, action};

} // namespace vykeldev
