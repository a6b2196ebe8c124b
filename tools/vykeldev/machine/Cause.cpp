#include "machine/Cause.h"

#include "machine/Findings.h"
#include "machine/FolderCheck.h"
#include "machine/Registrations.h"
#include "system/DisplayText.h"
#include "system/Text.h"
#include "vykel/StatusCodes.h"
#include <algorithm>
#include <vector>

namespace vykeldev {
namespace {

using Kinds = std::vector<const FindingKind*>;

/// What makes the library fail with a code.
Kinds causesOf(std::int32_t code) {
    if (code == vykel::toInteger(vykel::StatusCode::ResourceNotFound))
        return {&finding::pluginsKeyMissing, &finding::pluginsKeyDenied, &finding::folderUnknown};
    if (code == vykel::toInteger(vykel::StatusCode::ConfigurationFault))
        return {&finding::folderMissing, &finding::diskFull, &finding::lockUnusable,
                &finding::legacyNotWritable, &finding::legacyMalformed};
    return {};
}

} // namespace

Failure withCause(const Failure& failure, LibraryStep step) {
    const Kinds causes = causesOf(failure.code);
    if (causes.empty())
        return failure;
    FolderReport report;
    Findings& findings = report.findings;
    Progress progress(false);
    if (step != LibraryStep::Initialisation)
        checkFolder(report, progress);
    if (failure.code == vykel::toInteger(vykel::StatusCode::ResourceNotFound))
        countPlugins(findings); // a preview of aliases needs both the registry key and the folder
    const auto cause = std::find_if(findings.begin(), findings.end(), [&](const Finding& finding) {
        return std::count(causes.begin(), causes.end(), finding.kind) != 0;
    });
    if (cause == findings.end())
        return failure.withReason(failure.meaning + " A look at the machine, just now, showed no cause.",
                                  failure.remedy);
    const std::string place = cause->subject + (cause->line > 0 ? concat(':', cause->line) : std::string());
    const std::string detail = cause->detail.empty() ? "" : ": " + cause->detail;
    return failure.withReason(concat(cause->kind->meaning, " Seen: ", printable(place + detail)),
                              printable(cause->whatToDo()));
}

} // namespace vykeldev
