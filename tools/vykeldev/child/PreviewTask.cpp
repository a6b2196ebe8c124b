#include "child/PreviewTask.h"

#include "child/Preview.h"
#include "ConfigurationFolder.h"
#include "DeviceNumbering.h"
#include "machine/Findings.h"
#include "machine/Locks.h"
#include "output/Failures.h"
#include "pellumkelddk/user/FileLock.h"
#include "PellumKelPluginManager.h"
#include "system/DisplayText.h"
#include "system/Paths.h"
#include "system/System.h"
#include "system/Text.h"

namespace vykeldev {
namespace {

constexpr const char* action = "previewing the transfer of aliases";

/// What the next refresh does with an entry.
struct Fate {
    const char* outcome; ///< For programs.
    std::string text;    ///< For people.
};

Fate fateOf(const EntryPreview& entry) {
    const std::string device = "device KEL" + std::to_string(entry.device);
    if (entry.moves && entry.alias == "")
        return {"moves", "removed: the alias is empty, so " + device + " stays without one"};
    if (entry.moves)
        return {"moves",
                "moves to " + device +
                    (entry.stays ? "; stays because an entry of the same name is removed in its place" : "")};
    return {"dropped", device + " has an alias; dropped"};
}

/// That of an entry that no device is offered, in a file because of which the transfer fails, or not.
Fate fateOfUnused(const EntryPreview& entry, bool fails) {
    if (entry.flaw == &finding::legacyMalformed)
        return {"malformed", "malformed: " + entry.detail};
    if (entry.flaw == &finding::legacyNotLocal)
        return {"not-local", "not local; stays"};
    const bool later = entry.flaw == &finding::legacyDuplicate; // it counts once the other is gone
    if (entry.flaw != nullptr)
        return {"unreached", concat(!entry.stays ? "never used; removed with its section: "
                                    : later      ? "not used this time; stays: "
                                                 : "never used; stays: ",
                                    entry.detail)};
    if (fails)
        return {"blocked", "waits until the malformed entries are corrected"};
    return {"no-device",
            entry.stays ? "no matching device; stays"
                        : "no matching device; removed because another entry of the same name was moved"};
}

Json toJson(const EntryPreview& entry, bool fails) {
    const bool isUsed = entry.device != vykel::noDeviceNumber;
    const auto [outcome, text] = isUsed ? fateOf(entry) : fateOfUnused(entry, fails);
    return {{"line", entry.line},
            {"alias", entry.alias},
            {"target", entry.target},
            {"outcome", outcome},
            {"device", numberOrNull(entry.device)},
            {"detail", textOrNull(entry.detail)},
            {"stays", entry.stays},
            {"text", text}};
}

void report(const LegacyFile& file, const Preview& preview, Reporter& reporter) {
    static constexpr const char* layouts[] = {"resource names", "tokens of format 1", "tokens of format 2"};
    for (const EntryPreview& entry : preview.entries)
        reporter.report({{"entry", toJson(entry, preview.fails)}});
    reporter.report({{"document",
                      {{"exists", true},
                       {"layout", layouts[static_cast<std::size_t>(file.layout())]},
                       {"fails", preview.fails}}}});
}

/// Reads the file while no transfer runs. Makes no lock file: without one nobody has transferred yet. Throws
/// Failure when a transfer does not end.
LegacyFile readWhilePaused(const std::string& path, const std::string& lockPath) {
    const vykel::FileStream stream(std::fopen(lockPath.c_str(), "rb"));
    if (stream)
        lockOrThrow(stream.get(), lockPath);
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

/// The registered plug-ins, loaded in this process while this object lives.
struct LoadedPlugins : private vytpl::NonCopyableT<LoadedPlugins> {
    /// Leaves out plug-ins that fail. Throws vyerr::Exception when the plug-ins' key cannot be read.
    LoadedPlugins() { manager.loadAll(); }
    ~LoadedPlugins() { manager.unloadAll(); }

    vykel::PellumKelPluginManager manager;
};

/// Refreshes the lists, adds their devices, and gives those without a number the one of the next refresh. The
/// plug-ins never see these numbers, so that needs no lock.
void refresh(const std::vector<vykel::DeviceListPtr>& lists, PreviewDevices& devices) {
    for (const auto& list : lists) {
        std::vector<vykel::IDevice*> found;
        vykel::collectDevices(*list, found);
        for (vykel::IDevice* const device : found)
            devices.add(*device);
    }
    vykel::numberDevices(devices.table);
}

/// The child's side.
void runPreview(const std::vector<std::string>&, Reporter& reporter) {
    const std::string folder = vykel::getConfigurationFolder();
    const std::string path = folder + "vykel.ini";
    reporter.report({{"document", {{"file", path}, {"link", textOrNull(linkText(path))}}}});
    const LegacyFile file = readWhilePaused(path, folder + "vykel.lck");
    if (!isRead(file, path))
        return;
    reporter.beginStep("loading the plug-ins");
    LoadedPlugins plugins;
    try {
        reporter.beginStep("refreshing the devices");
        std::vector<vykel::DeviceListPtr> lists;
        plugins.manager.getDeviceLists(lists);
        PreviewDevices devices;
        refresh(lists, devices);
        report(file, previewTransfer(file, devices), reporter);
        reporter.beginStep("unloading the plug-ins");
    } catch (...) {
        throw currentFailure(action); // a plug-in's exception must not outlive its plug-in's code
    }
}

} // namespace

const ChildTask previewTask = {"aliases", runPreview, action};

} // namespace vykeldev
