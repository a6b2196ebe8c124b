#include "doctor/TextReport.h"

#include "doctor/JsonReport.h"
#include "output/Table.h"
#include "system/DisplayText.h"
#include <ostream>

namespace vykeldev::doctor {
namespace {

std::string counted(std::size_t count, const char* what) {
    return std::to_string(count) + ' ' + what + (count == 1 ? "" : "s");
}

void printPlugins(std::ostream& out, const Report& report, Json rows, bool colour) {
    out << counted(report.plugins.size(), "plug-in") << " registered: " << report.count(PluginOutcome::Loaded)
        << " loaded, " << report.count(PluginOutcome::Refused) << " refused, "
        << report.count(PluginOutcome::Failed) << " failed\n";
    if (rows.empty())
        return;
    for (Json& row : rows)
        if (!row["failedStep"].is_null() && row["devices"] == 0)
            row["devices"] = nullptr;
    printTable(out, colour,
               {{"PLUG-IN", "name"},
                {"OUTCOME", "outcome"},
                {"FAILED AT", "failedStep"},
                {"MS", "milliseconds", Column::Kind::Count},
                {"DEVICES", "devices", Column::Kind::Count},
                {"VERSION", "version"},
                {"MAKER", "maker"},
                {"WRITTEN", "written"},
                {"PATH", "path"}},
               rows);
    out << '\n';
}

void printDevices(std::ostream& out, const Json& plugins, bool colour) {
    Json rows = Json::array();
    for (const Json& plugin : plugins)
        for (Json device : plugin.at("deviceList")) {
            device["plugin"] = plugin["name"];
            rows.push_back(std::move(device));
        }
    printTable(out, colour,
               {{"PLUG-IN", "plugin"},
                {"NUMBER", "number", Column::Kind::DeviceNumber},
                {"ALIAS", "alias"},
                {"TOKEN", "token"}},
               rows);
    out << '\n';
}

void printFinding(std::ostream& out, const Finding& finding, bool colour) {
    static constexpr const char* colours[] = {"\x1b[36m", "\x1b[33m", "\x1b[1;31m"};
    const FindingKind& kind = *finding.kind;
    out << (colour ? colours[static_cast<std::size_t>(kind.severity)] : "") << nameOf(kind.severity)
        << (colour ? "\x1b[0m" : "") << ' ' << kind.id << ": " << printable(finding.subject);
    if (finding.line > 0)
        out << ':' << finding.line;
    out << '\n';
    if (!finding.detail.empty())
        out << "  seen:       " << printable(finding.detail) << '\n';
    out << "  meaning:    " << kind.meaning << "\n  what to do: " << printable(finding.whatToDo()) << "\n\n";
}

} // namespace

void printReport(std::ostream& out, const Report& report, bool colour) {
    const Json document = report;
    printPlugins(out, report, document["plugins"], colour);
    if (report.listsDevices)
        printDevices(out, document["plugins"], colour);
    for (const LockState& lock : report.locks)
        if (lock.secondsWaited > 0)
            out << printable(lock.path) << ": " << lock.state << " after " << lock.secondsWaited
                << " seconds\n";
    for (const Severity severity : {Severity::Error, Severity::Warning, Severity::Info})
        for (const Finding& finding : report.findings)
            if (finding.kind->severity == severity)
                printFinding(out, finding, colour);
    const std::size_t errors = report.count(Severity::Error);
    const std::size_t warnings = report.count(Severity::Warning);
    if (errors + warnings == 0)
        out << "healthy\n";
    else
        out << counted(errors, "error") << ", " << counted(warnings, "warning") << '\n';
}

} // namespace vykeldev::doctor
