#include "doctor/TextReport.h"

#include "output/Severity.h"
#include "output/Table.h"
#include "system/DisplayText.h"
#include <ostream>

namespace vykeldev::doctor {
namespace {

std::string counted(std::size_t count, const char* what) {
    return std::to_string(count) + ' ' + what + (count == 1 ? "" : "s");
}

void printPlugins(std::ostream& out, const Json& report, bool colour) {
    const Json& counts = report["counts"];
    Json rows = report["plugins"];
    out << counted(rows.size(), "plug-in") << " registered: " << counts["loaded"] << " loaded, "
        << counts["refused"] << " refused, " << counts["failed"] << " failed\n";
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

void printFinding(std::ostream& out, const Json& finding, Severity severity, bool colour) {
    static constexpr const char* colours[] = {"\x1b[36m", "\x1b[33m", "\x1b[1;31m"};
    const auto text = [&](const char* member) { return printable(finding[member].get<std::string>()); };
    out << (colour ? colours[static_cast<std::size_t>(severity)] : "") << nameOf(severity)
        << (colour ? "\x1b[0m" : "") << ' ' << text("id") << ": " << text("subject");
    if (!finding["line"].is_null())
        out << ':' << finding["line"];
    out << '\n';
    if (finding["detail"] != "")
        out << "  seen:       " << text("detail") << '\n';
    out << "  meaning:    " << text("meaning") << "\n  what to do: " << text("remedy") << "\n\n";
}

} // namespace

void printReport(std::ostream& out, const Json& report, bool devices, bool colour) {
    printPlugins(out, report, colour);
    if (devices)
        printDevices(out, report["plugins"], colour);
    for (const Json& lock : report["locks"])
        if (const double seconds = lock["secondsWaited"]; seconds > 0)
            out << printable(lock["path"].get<std::string>()) << ": " << lock["state"].get<std::string>()
                << " after " << seconds << " seconds\n";
    std::size_t counts[3] = {};
    for (const Severity severity : {Severity::Error, Severity::Warning, Severity::Info})
        for (const Json& finding : report["findings"])
            if (finding["severity"] == nameOf(severity)) {
                printFinding(out, finding, severity, colour);
                ++counts[static_cast<std::size_t>(severity)];
            }
    const auto [infos, warnings, errors] = counts;
    if (errors + warnings == 0)
        out << "healthy\n";
    else
        out << counted(errors, "error") << ", " << counted(warnings, "warning") << '\n';
}

} // namespace vykeldev::doctor
