#include "commands/Commands.h"
#include "doctor/Checks.h"
#include "doctor/Findings.h"
#include "doctor/LegacyExcerpt.h"
#include "doctor/Zip.h"
#include "platform/Process.h"
#include "platform/System.h"
#include "support/DisplayText.h"
#include "support/Files.h"
#include "support/JsonFailure.h"
#include "support/NumberRange.h"
#include "support/Paths.h"
#include "support/Text.h"
#include <CLI/CLI.hpp>
#include <iostream>
#include <memory>

namespace vykeldev::doctor {
namespace {

struct DoctorOptions {
    bool json = false;
    bool force = false;
    bool devices = false;
    double timeout = 10; // seconds
    std::string bundle;
};

/// Checks that clients of this tool's release can load the library.
void checkLibrary(const Versions& versions, Findings& findings) {
    const HMODULE library = LoadLibraryExW(toWide(versions.libraryPath).c_str(), nullptr, 0);
    if (library == nullptr || GetProcAddress(library, "vykeldevenum_initialize") == nullptr)
        findings.push_back({&finding::libraryMissing, versions.libraryPath, systemErrorText(GetLastError())});
    if (library != nullptr)
        FreeLibrary(library);
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

/// Writes only what support needs into one ZIP file, and prints what that is.
void writeBundle(std::ostream& out, const DoctorOptions& options, Report report) {
    const LegacyExcerpt legacy(report.legacy.bytes);
    for (Finding& finding : report.findings)
        if (finding.kind == &finding::legacyLineIgnored && legacy.leftOut.count(finding.line) != 0)
            finding.detail = "(left out)";
    std::vector<ZipEntry> entries = {{"account.json", textOf(report) + '\n'},
                                     {"registrations.json", textOf(registrationsToJson(report)) + '\n'},
                                     {"locks.json", textOf(report.locks) + '\n'},
                                     {"versions.json", textOf(report.versions) + '\n'}};
    if (report.legacy.state == "read")
        entries.push_back({"vykel.ini", legacy.text});
    writeFile(options.bundle, makeZip(entries), options.force);
    out << "wrote " << printable(options.bundle) << ':';
    for (const ZipEntry& entry : entries)
        out << "\n  " << entry.name << ", " << entry.bytes.size() << " bytes";
    if (!legacy.leftOut.empty())
        out << "\nleft out: " << legacy.leftOut.size() << " lines of vykel.ini that are not about aliases";
    out << '\n';
}

ExitCode diagnose(const Context& context, const DoctorOptions& options) {
    suppressCrashDialogs();
    const Report report = makeReport(context, options);
    const auto finish = [&] {
        if (!options.bundle.empty())
            writeBundle(options.json ? context.notices() : std::cout, options, report);
    };
    if (options.json) {
        printDocument(report, finish);
    } else {
        printReport(std::cout, report, context.colour);
        finish();
    }
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
    command
        ->add_option("--bundle", options->bundle,
                     "Also writes what support needs into this ZIP file: registrations, account, lock state, "
                     "alias sections of the legacy file, versions")
        ->type_name("FILE.zip");
    command->add_flag("--devices", options->devices, "Also lists the devices of every plug-in");
    command->add_flag("--force", options->force, "Replaces an existing bundle");
    command->footer(
        "Exit codes: 0 healthy, 4 warnings, 5 something is broken. docs/findings.md explains every "
        "finding.");
    command->callback([options, &chosen] {
        chosen = {[options](const Context& context) { return doctor::diagnose(context, *options); },
                  documentIf(options->json)};
    });
}

} // namespace vykeldev
