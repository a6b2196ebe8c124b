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
Kinds causesOf(std::optional<std::int32_t> code) {
    if (code == vykel::toInteger(vykel::StatusCode::ResourceNotFound))
        return {&finding::pluginsKeyMissing, &finding::pluginsKeyDenied, &finding::folderUnknown};
    if (code == vykel::toInteger(vykel::StatusCode::ConfigurationFault))
        return {&finding::folderMissing, &finding::diskFull, &finding::lockUnusable,
                &finding::legacyNotWritable, &finding::legacyMalformed};
    return {};
}

} // namespace

Failure withCause(Failure failure) {
    const Kinds causes = causesOf(failure.code);
    if (causes.empty())
        return failure;
    FolderReport report;
    Progress progress(false);
    countPlugins(report.findings);
    checkFolder(report, progress);
    const auto cause = std::find_if(report.findings.begin(), report.findings.end(), [&](const Finding& it) {
        return std::count(causes.begin(), causes.end(), it.kind) != 0;
    });
    if (cause == report.findings.end()) {
        failure.meaning += " A look at the machine, just now, showed no cause.";
        return failure;
    }
    const std::string place = cause->subject + (cause->line > 0 ? concat(':', cause->line) : std::string());
    const std::string detail = cause->detail.empty() ? "" : ": " + cause->detail;
    failure.meaning = concat(cause->kind->meaning, " Seen: ", printable(place + detail));
    failure.remedy = printable(cause->whatToDo());
    return failure;
}

} // namespace vykeldev
