#include "aliases/Preview.h"
#include "commands/Commands.h"
#include "ConfigurationFolder.h"
#include "doctor/Cause.h"
#include "errors/Exception.h"
#include "pellumkelddk/user/FileLock.h"
#include "platform/System.h"
#include "support/BoundedLock.h"
#include "support/DisplayText.h"
#include "support/JsonFailure.h"
#include "support/Table.h"
#include "TraditionalAliasTransferManager.h"
#include <CLI/CLI.hpp>
#include <iostream>
#include <memory>

namespace vykeldev::aliases {
namespace {

using vykel::AliasLayout;

const char* nameOf(Outcome outcome) noexcept {
    static constexpr const char* names[] = {"moves",     "dropped",   "no-device", "not-local",
                                            "unreached", "malformed", "blocked"};
    return names[static_cast<std::size_t>(outcome)];
}

const char* layoutText(AliasLayout layout) noexcept {
    static constexpr const char* texts[] = {"resource names", "tokens of format 1", "tokens of format 2"};
    return texts[static_cast<std::size_t>(layout)];
}

std::string unreachedText(const EntryPreview& entry) {
    if (!entry.stays)
        return "never used; removed with its section: " + entry.detail;
    const bool later = entry.flaw == Flaw::Duplicate; // it counts once the other is gone
    return (later ? "not used this time; stays: " : "never used; stays: ") + entry.detail;
}

std::string outcomeText(const EntryPreview& entry) {
    const std::string device = "device KEL" + std::to_string(entry.device);
    switch (entry.outcome) {
    case Outcome::Moves:
        return "moves to " + device +
               (entry.stays ? "; stays because an entry of the same name is removed in its place" : "");
    case Outcome::Dropped:
        return device + " has an alias; dropped";
    case Outcome::NoDevice:
        return entry.stays ? "no matching device; stays"
                           : "no matching device; removed because another entry of the same name was moved";
    case Outcome::NotLocal:
        return "not local; stays";
    case Outcome::Unreached:
        return unreachedText(entry);
    case Outcome::Malformed:
        return "malformed: " + entry.detail;
    case Outcome::Blocked:
        break;
    }
    return "waits until the malformed entries are corrected";
}

void printTable(const std::string& path, const Preview& preview, bool colour) {
    std::cout << printable(path) << ": aliases by " << layoutText(preview.layout) << '\n';
    if (preview.entries.empty()) {
        std::cout << "No entries are left.\n";
        return;
    }
    using Align = Table::Align;
    Table table({{"LINE", Align::Right},
                 {"ALIAS", Align::Left},
                 {preview.layout == AliasLayout::ByResourceName ? "DEVICE" : "TOKEN", Align::Left},
                 {"NEXT REFRESH", Align::Left}});
    for (const EntryPreview& entry : preview.entries) {
        table.addRow({std::to_string(entry.line), entry.alias.value_or("-"), entry.target.value_or("-"),
                      outcomeText(entry)});
    }
    table.print(std::cout, colour);
}

/// `preview` is null when there is no file.
Json toDocument(const std::string& path, const std::string& link, const Preview* preview) {
    Json document = {{"schemaVersion", 1},
                     {"file", path},
                     {"exists", preview != nullptr},
                     {"link", link.empty() ? Json() : Json(link)},
                     {"layout", nullptr},
                     {"fails", false},
                     {"entries", Json::array()}};
    if (preview != nullptr) {
        document["layout"] = layoutText(preview->layout);
        document["fails"] = preview->fails;
        for (const EntryPreview& entry : preview->entries) {
            document["entries"].push_back({{"line", entry.line},
                                           {"alias", orNull(entry.alias)},
                                           {"target", orNull(entry.target)},
                                           {"outcome", nameOf(entry.outcome)},
                                           {"device", numberOrNull(entry.device)},
                                           {"detail", entry.detail.empty() ? Json() : Json(entry.detail)},
                                           {"stays", entry.stays}});
        }
    }
    return document;
}

/// Keeps transfers from running while the stream is open. Makes no lock file: without one nobody has
/// transferred yet. Throws Failure when a transfer does not end, vyerr::Exception when the folder is unknown.
vykel::FileStream pauseTransfers() {
    const std::string path = vykel::getConfigurationFolder() + "vykel.lck";
    vykel::FileStream stream(std::fopen(path.c_str(), "rb"));
    const DWORD error = stream ? lockInTime(stream.get(), [](auto) {}) : ERROR_SUCCESS;
    if (error != ERROR_SUCCESS)
        throw systemFailure("locking '" + printable(path) + "'", error,
                            "Most likely a client hangs in a refresh; 'vykeldev doctor' says more.");
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
    throw Failure(what, meaning, "Close the program that holds it, and let this user read it.");
}

ExitCode showPreview(const Context& context, bool json) {
    const std::string path = vykel::TraditionalAliasTransferManager().iniPath();
    const LegacyFile file = readWhilePaused(path);
    const std::string link = linkText(path); // the refresh reads what it leads to, but writes a new file
    if (!link.empty())
        context.notices() << "vykeldev: warning: " << printable(path) << " is " << link
                          << ": a refresh that moves an alias puts a new file in its place and leaves the "
                             "other as it is; 'vykeldev doctor' says more\n";
    if (!isRead(file, path)) {
        if (json)
            std::cout << textOf(toDocument(path, link, nullptr)) << '\n';
        context.notices() << "vykeldev: no legacy file " << printable(path) << '\n';
        return ExitCode::NothingListed;
    }
    const PreviewDevices devices;
    const Preview preview = previewTransfer(file, devices.table(), devices.all());
    const auto throwError = [&] {
        if (preview.fails)
            throw Failure("every refresh fails with -50209, and moves nothing", "",
                          "Correct the malformed entries.");
    };
    if (json)
        printDocument(toDocument(path, link, &preview), throwError);
    else
        printTable(path, preview, context.colour);
    throwError();
    return ExitCode::Success;
}

ExitCode previewAliases(const Context& context, bool json) {
    try {
        return showPreview(context, json);
    } catch (const vyerr::ExceptionBase& exception) {
        vykel::StatusBlock status = vykel::makeStatusBlock();
        vyerr::statusToBlock(exception.status(), &status);
        throw doctor::withCause(statusFailure("previewing the transfer of aliases", status));
    }
}

} // namespace
} // namespace vykeldev::aliases

namespace vykeldev {

void addAliasesCommand(CLI::App& app, Run& chosen) {
    const auto json = std::make_shared<bool>(false);
    CLI::App* const command = app.add_subcommand(
        "aliases",
        "Shows what the next refresh does with the aliases of an older release, and changes nothing");
    command->add_flag("--json", *json, "Prints one JSON object (schemas/aliases.schema.json)");
    command->footer("Exit codes: 0 done, 1 the file is malformed, locked or cannot be read, 3 there is none. "
                    "docs/legacy-aliases.md explains the file.");
    command->callback([json, &chosen] {
        chosen = {[json](const Context& context) { return aliases::previewAliases(context, *json); },
                  documentIf(*json)};
    });
}

} // namespace vykeldev
