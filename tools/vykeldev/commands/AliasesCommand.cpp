#include "commands/AliasesCommand.h"

#include "AliasRecords.h"
#include "child/PreviewTask.h"
#include "machine/Cause.h"
#include "output/Failures.h"
#include "output/Table.h"
#include "system/DisplayText.h"
#include <CLI/CLI.hpp>
#include <iostream>
#include <memory>
#include <optional>
#include <vector>

namespace vykeldev {
namespace {

using vykel::AliasLayout;

const char* layoutText(AliasLayout layout) noexcept {
    static constexpr const char* texts[] = {"resource names", "tokens of format 1", "tokens of format 2"};
    return texts[static_cast<std::size_t>(layout)];
}

/// What the child reported.
struct Result {
    std::string file;                  ///< Its path.
    std::string link;                  ///< What sort of link it is, or empty.
    std::optional<AliasLayout> layout; ///< None: there is no file.
    bool fails = false;
    Json entries = Json::array();
    std::vector<std::string> texts; ///< What becomes of each entry.
    Json failed;                    ///< Why there is no preview, or null.
};

void take(const Json& report, Result& result) {
    if (report.contains("file")) {
        report["file"].get_to(result.file);
        report["link"].get_to(result.link);
    }
    if (report.contains("entry")) {
        result.entries.push_back(report["entry"]);
        result.texts.push_back(report["text"]);
    }
    if (report.contains("layout")) {
        if (!report["layout"].is_null())
            result.layout = report["layout"].get<AliasLayout>();
        report["fails"].get_to(result.fails);
        if (result.file.empty() || report["sent"] != result.texts.size())
            result.failed = TaskRun::lostReport("a part of the preview");
    }
    if (report.contains("failed"))
        result.failed = withCause(failureFrom(report["failed"]));
}

Result runPreview() {
    Result result;
    bool isDone = false;
    TaskRun child(previewTask, {}, [&](const Json& report) {
        take(report, result);
        isDone = isDone || report.contains("layout") || report.contains("failed");
    });
    while (!isDone && child.listen(std::chrono::minutes(1))) {
    }
    if (!isDone)
        result.failed = child.endFailure();
    return result;
}

void printText(const Result& result, bool colour) {
    std::cout << printable(result.file) << ": aliases by " << layoutText(*result.layout) << '\n';
    if (result.entries.empty()) {
        std::cout << "No entries are left.\n";
        return;
    }
    Json rows = result.entries;
    for (std::size_t i = 0; i < result.texts.size(); ++i)
        rows[i]["text"] = result.texts[i];
    printTable(std::cout, colour,
               {{"LINE", "line", Column::Kind::Count},
                {"ALIAS", "alias"},
                {result.layout == AliasLayout::ByResourceName ? "DEVICE" : "TOKEN", "target"},
                {"NEXT REFRESH", "text"}},
               rows);
}

Json toDocument(const Result& result) {
    return {{"schemaVersion", 1},
            {"file", result.file},
            {"exists", result.layout.has_value()},
            {"link", result.link.empty() ? Json() : Json(result.link)},
            {"layout", result.layout ? Json(layoutText(*result.layout)) : Json()},
            {"fails", result.fails},
            {"entries", result.entries}};
}

ExitCode previewAliases(const Context& context, bool json) {
    const Result result = runPreview();
    if (!result.link.empty()) // the refresh reads what it leads to, but writes a new file
        context.notices() << "vykeldev: warning: " << printable(result.file) << " is " << result.link
                          << ": a refresh that moves an alias puts a new file in its place and leaves the "
                             "other as it is; 'vykeldev doctor' says more\n";
    if (!result.failed.is_null())
        throw failureFrom(result.failed);
    const auto throwError = [&] {
        if (result.fails)
            throw Failure("every refresh fails with -50209, and moves nothing", "",
                          "Correct the malformed entries.");
    };
    if (json)
        printDocument(toDocument(result), throwError);
    else if (result.layout)
        printText(result, context.colour);
    throwError();
    if (result.layout)
        return ExitCode::Success;
    context.notices() << "vykeldev: no legacy file " << printable(result.file) << '\n';
    return ExitCode::NothingListed;
}

} // namespace

void addAliasesCommand(CLI::App& app, Run& chosen) {
    const auto json = std::make_shared<bool>(false);
    CLI::App* const command = app.add_subcommand(
        "aliases",
        "Shows what the next refresh does with the aliases of an older release, and changes nothing");
    command->add_flag("--json", *json, "Prints one JSON object (schemas/aliases.schema.json)");
    command->footer(
        "Exit codes: 0 done, 1 an error, also a file that is malformed or locked, 3 there is none. "
        "docs/legacy-aliases.md explains the file.");
    command->callback([json, &chosen] {
        chosen = {[json](const Context& context) { return previewAliases(context, *json); },
                  documentIf(*json)};
    });
}

} // namespace vykeldev
