#include "doctor/DoctorCommand.h"

#include "doctor/JsonReport.h"
#include "doctor/PluginCheck.h"
#include "doctor/TextReport.h"
#include "machine/Findings.h"
#include "machine/FolderCheck.h"
#include "system/Paths.h"
#include "system/Process.h"
#include "system/System.h"
#include "system/Text.h"
#include "vybase/owners.h"

namespace vykeldev::doctor {
namespace {

/// Checks that clients of this tool's release can load the library. Returns which releases are at work.
Json checkLibrary(const std::string& path, Findings& findings) {
    const std::string tool = VYKELDEV_VERSION;
    const auto version = factsOf(path)["version"].get<std::optional<std::string>>();
    const vybase::Module library(LoadLibraryExW(toWide(path).c_str(), nullptr, 0));
    if (!library || GetProcAddress(library.get(), "vykeldevenum_initialize") == nullptr)
        findings.push_back({&finding::libraryMissing, path, systemErrorText(GetLastError())});
    if (version && (*version + '.').rfind(tool + '.', 0) != 0)
        findings.push_back({&finding::libraryVersion, path, "library " + *version + ", tool " + tool});
    return {{"tool", tool}, {"libraryPath", path}, {"library", version}, {"system", systemVersion()}};
}

/// Looks at everything and reports it.
Json examineMachine(const Context& context, const DoctorOptions& options) {
    Progress progress(!context.quiet);
    FolderReport folder;
    const Json versions = checkLibrary(absolutePath(context.library), folder.findings);
    const std::vector<PluginAccount> plugins = checkPlugins(options, folder.findings, progress);
    checkFolder(folder, progress);
    return makeReport(versions, plugins, folder);
}

ExitCode diagnose(Context& context, const DoctorOptions& options) {
    suppressCrashDialogs();
    Json& report = context.document;
    report.update(examineMachine(context, options));
    if (!options.devices)
        for (Json& plugin : report["plugins"])
            plugin.erase("deviceList");
    if (!options.json)
        printReport(std::cout, report, options.devices, context.colour);
    return report["state"] == "healthy"    ? ExitCode::Success
           : report["state"] == "warnings" ? ExitCode::Warnings
                                           : ExitCode::Broken;
}

} // namespace
} // namespace vykeldev::doctor

namespace vykeldev {

void addDoctorCommand(CLI::App& app, Run& chosen) {
    const auto& [command, options] = addCommand(
        app, chosen,
        {"doctor", "Says why a device is missing: tries every plug-in, but changes no number and no alias",
         "doctor --json > report.json",
         "Exit codes: 0 healthy, 4 warnings, 5 something is broken. docs/findings.md explains every finding."},
        doctor::diagnose);
    command.add_option("NAME", options.name, "Tries only the plug-in that is registered under this name")
        ->type_name("");
    addSeconds(command, "--timeout", options.timeout, "Seconds for each plug-in (default 10)", 0.001);
    command.add_flag("--devices", options.devices, "Also lists the devices of every plug-in");
}

} // namespace vykeldev
