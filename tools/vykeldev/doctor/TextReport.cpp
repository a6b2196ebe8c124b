#include "doctor/TextReport.h"

#include "output/Table.h"
#include "system/DisplayText.h"
#include <ostream>

namespace vykeldev::doctor {
namespace {

std::string counted(std::size_t count, const char* what) {
    return std::to_string(count) + ' ' + what + (count == 1 ? "" : "s");
}

void printPlugins(std::ostream& out, const Report& report, bool colour) {
    using Align = Table::Align;
    out << counted(report.plugins.size(), "plug-in") << " registered: " << report.count(PluginOutcome::Loaded)
        << " loaded, " << report.count(PluginOutcome::Refused) << " refused, "
        << report.count(PluginOutcome::Failed) << " failed\n";
    if (report.plugins.empty())
        return;
    Table table({{"PLUG-IN", Align::Left},
                 {"OUTCOME", Align::Left},
                 {"FAILED AT", Align::Left},
                 {"MS", Align::Right},
                 {"DEVICES", Align::Right},
                 {"PATH", Align::Left}});
    for (const PluginAccount& plugin : report.plugins) {
        const bool listed = plugin.outcome == PluginOutcome::Loaded || !plugin.deviceNumbers.empty();
        table.addRow({plugin.name, nameOf(plugin.outcome),
                      plugin.failedStep ? nameOf(*plugin.failedStep) : "-",
                      std::to_string(plugin.milliseconds),
                      listed ? std::to_string(plugin.deviceNumbers.size()) : "-", plugin.path.value_or("-")});
    }
    table.print(out, colour);
    out << '\n';
}

void printDevices(std::ostream& out, const Report& report, bool colour) {
    using Align = Table::Align;
    const auto textOf = [](const Json& text) { return text.is_null() ? "-" : text.get<std::string>(); };
    Table table(
        {{"PLUG-IN", Align::Left}, {"NUMBER", Align::Left}, {"ALIAS", Align::Left}, {"TOKEN", Align::Left}});
    for (const PluginAccount& plugin : report.plugins)
        for (const Json& device : plugin.deviceList)
            table.addRow({plugin.name, device["number"].is_null() ? "-" : "KEL" + device["number"].dump(),
                          textOf(device["alias"]), textOf(device["token"])});
    table.print(out, colour);
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
    printPlugins(out, report, colour);
    if (report.listsDevices)
        printDevices(out, report, colour);
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
