#include "doctor/DoctorCommand.h"

#include "doctor/JsonReport.h"
#include "doctor/PluginCheck.h"
#include "doctor/TextReport.h"
#include "machine/Findings.h"
#include "machine/FolderCheck.h"
#include "output/Json.h"
#include "system/Paths.h"
#include "system/Process.h"
#include "system/System.h"
#include "system/Text.h"
#include "vybase/owners.h"

namespace vykeldev::doctor {
namespace {

struct DoctorOptions : CommonOptions {
    std::string name;
    bool devices = false;
    double timeout = 10; // seconds
};

/// Checks that clients of this tool's release can load the library.
void checkLibrary(const Versions& versions, Findings& findings) {
    const vybase::Module library(LoadLibraryExW(toWide(versions.libraryPath).c_str(), nullptr, 0));
    if (!library || GetProcAddress(library.get(), "vykeldevenum_initialize") == nullptr)
        findings.push_back({&finding::libraryMissing, versions.libraryPath, systemErrorText(GetLastError())});
    if (versions.library && (*versions.library + '.').rfind(versions.tool + '.', 0) != 0)
        findings.push_back({&finding::libraryVersion, versions.libraryPath,
                            "library " + *versions.library + ", tool " + versions.tool});
}

Report makeReport(const Context& context, const DoctorOptions& options) {
    Progress progress(!context.quiet);
    Report report;
    report.listsDevices = options.devices;
    const std::string library = absolutePath(context.library);
    report.versions = {VYKELDEV_VERSION, library, factsOf(library).version, systemVersion()};
    checkLibrary(report.versions, report.findings);
    const std::chrono::milliseconds limit(static_cast<long long>(options.timeout * 1000));
    checkPlugins(report, {options.name, limit, options.devices}, progress);
    checkFolder(report, progress);
    return report;
}

ExitCode diagnose(Context& context, const DoctorOptions& options) {
    suppressCrashDialogs();
    const Report report = makeReport(context, options);
    context.document = report;
    if (!options.json)
        printReport(std::cout, report, context.colour);
    if (report.count(Severity::Error) > 0)
        return ExitCode::Broken;
    return report.count(Severity::Warning) > 0 ? ExitCode::Warnings : ExitCode::Success;
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
