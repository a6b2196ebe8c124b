#include "commands/AliasesCommand.h"

#include "child/PreviewTask.h"
#include "output/Failures.h"
#include "output/Table.h"
#include "system/DisplayText.h"

namespace vykeldev {
namespace {

/// A refresh reads what the link leads to, but writes a new file.
void warnOfLink(const Context& context, const Json& document) {
    context.notices() << typeable(
        concat("vykeldev: warning: ", printable(document["file"].get<std::string>()), " is ",
               document["link"].get<std::string>(),
               ": a refresh that moves an alias puts a new file in its place and leaves the other as it is; "
               "'vykeldev doctor' says more\n"));
}

/// The document that the child reports.
Json runPreview(const Context& context) {
    Json document = {{"file", ""},        {"exists", false}, {"link", nullptr},
                     {"layout", nullptr}, {"fails", false},  {"entries", Json::array()}};
    TaskRun child(previewTask, {}, [&](const Json& report) {
        const Json members = report.value("document", Json::object());
        document.update(members);
        if (report.contains("entry"))
            document["entries"].push_back(report["entry"]);
        if (!members.value("link", Json()).is_null())
            warnOfLink(context, document);
    });
    while (!child.isDone())
        child.listen();
    return document;
}

void printText(const Json& document, const std::string& file, bool colour) {
    const auto layout = document["layout"].get<std::string>();
    std::cout << file << ": aliases by " << layout << '\n';
    if (document["entries"].empty()) {
        std::cout << "No entries are left.\n";
        return;
    }
    printTable(std::cout, colour,
               {{"LINE", "line", Column::Kind::Count},
                {"ALIAS", "alias"},
                {layout == "resource names" ? "DEVICE" : "TOKEN", "target"},
                {"NEXT REFRESH", "text"}},
               document["entries"]);
}

ExitCode previewAliases(Context& context, const CommonOptions& options) {
    const Json document = runPreview(context);
    const std::string file = printable(document["file"].get<std::string>());
    const bool exists = document["exists"].get<bool>();
    context.document.update(document);
    if (exists && !options.json)
        printText(document, file, context.colour);
    if (document["fails"].get<bool>())
        throw Failure("every refresh fails with -50209, and moves nothing", "",
                      "Correct the malformed entries.");
    if (exists)
        return ExitCode::Success;
    context.notices() << "vykeldev: no legacy file " << file << '\n';
    return ExitCode::NothingListed;
}

} // namespace

void addAliasesCommand(CLI::App& app, Run& chosen) {
    addCommand(app, chosen,
               {"aliases",
                "Shows what the next refresh does with the aliases of an older release, and changes nothing",
                "aliases --json",
                "Exit codes: 0 done, 1 an error, also a file that is malformed or locked, 3 there is none. "
                "docs/legacy-aliases.md explains the file."},
               previewAliases);
}

} // namespace vykeldev
