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
#include <CLI/CLI.hpp>
#include <iostream>
#include <memory>

namespace vykeldev::doctor {
namespace {

struct DoctorOptions {
    bool json = false;
    bool devices = false;
    double timeout = 10; // seconds
};

/// Checks that clients of this tool's release can load the library.
void checkLibrary(const Versions& versions, Findings& findings) {
    const vybase::Module library(LoadLibraryExW(toWide(versions.libraryPath).c_str(), nullptr, 0));
    if (!library || GetProcAddress(library.get(), "vykeldevenum_initialize") == nullptr)
        findings.push_back({&finding::libraryMissing, versions.libraryPath, systemErrorText(GetLastError())});
    const bool same = (versions.library + '.').rfind(versions.tool + '.', 0) == 0;
    if (!versions.library.empty() && !same)
        findings.push_back({&finding::libraryVersion, versions.libraryPath,
                            "library " + versions.library + ", tool " + versions.tool});
}

Report makeReport(const Context& context, const DoctorOptions& options) {
    Progress progress(!context.quiet);
    Report report;
    report.listsDevices = options.devices;
    const std::string library = absolutePath(context.library);
    report.versions = {VYKELDEV_VERSION, library, fileVersion(library), systemVersion()};
    checkLibrary(report.versions, report.findings);
    checkPlugins(report, std::chrono::milliseconds(static_cast<long long>(options.timeout * 1000)), progress);
    checkFolder(report, progress);
    return report;
}

ExitCode diagnose(const Context& context, const DoctorOptions& options) {
    suppressCrashDialogs();
    const Report report = makeReport(context, options);
    if (options.json)
        std::cout << textOf(report) << '\n';
    else
        printReport(std::cout, report, context.colour);
    if (report.count(Severity::Error) > 0)
        return ExitCode::Broken;
    return report.count(Severity::Warning) > 0 ? ExitCode::Warnings : ExitCode::Success;
}

} // namespace
} // namespace vykeldev::doctor

namespace vykeldev {

void addDoctorCommand(CLI::App& app, Run& chosen) {
    const auto options = std::make_shared<doctor::DoctorOptions>();
    CLI::App* const command = app.add_subcommand(
        "doctor", "Says why a device is missing: tries every plug-in, but changes no number and no alias");
    command->add_flag("--json", options->json, "Prints one JSON object (schemas/doctor.schema.json)");
    command->add_option("--timeout", options->timeout, "Seconds for each plug-in (default 10)")
        ->check(inRange(0.001, 86400, "0.001 to 86400 seconds"))
        ->type_name("S");
    command->add_flag("--devices", options->devices, "Also lists the devices of every plug-in");
    command->footer(
        "Exit codes: 0 healthy, 4 warnings, 5 something is broken. docs/findings.md explains every "
        "finding.");
    command->callback([options, &chosen] {
        chosen = {[options](const Context& context) { return doctor::diagnose(context, *options); },
                  documentIf(options->json)};
    });
}

} // namespace vykeldev
