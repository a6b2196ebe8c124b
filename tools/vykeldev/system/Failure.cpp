#include "system/Failure.h"

#include "errors/Exception.h"
#include "system/DisplayText.h"
#include "system/StatusText.h"
#include "system/System.h"
#include "system/Text.h"
#include "vykel/StatusCodes.h"
#include <algorithm>
#include <iterator>
#include <new>
#include <ostream>
#include <utility>

namespace vykeldev {
namespace {

using vykel::StatusCode;

struct Explanation {
    StatusCode code;
    const char* name;
    const char* meaning;
    const char* remedy;
};

constexpr Explanation explanations[] = {
    {StatusCode::ConfigurationFault, "ConfigurationFault",
     "A lock file could not be made, or the legacy alias file vykel.ini was malformed or could not be saved. "
     "The cause is gone now.",
     "Try again."},
    {StatusCode::MemoryFull, "MemoryFull", "Memory is exhausted.", freeMemory},
    {StatusCode::GeneralFault, "GeneralFault",
     "Most likely a plug-in let an exception out. If not, the library failed in an unforeseen way.",
     "Run 'vykeldev doctor': it names the plug-in. If it names none, report the code and what "
     "--verbose adds."},
    {StatusCode::BadCast, "BadCast", "A plug-in is faulty.",
     "'vykeldev doctor' tries each plug-in by itself and names it."},
    {StatusCode::InvalidParameter, "InvalidParameter", "The library refuses an argument of this tool.",
     "Install tool and library from the same release."},
    {StatusCode::ResourceNotFound, "ResourceNotFound", "The common application data folder cannot be found.",
     "Check that the folder (usually C:\\ProgramData) is there."},
    {StatusCode::OsFault, "OsFault", "The operating system refuses an event or a file lock.",
     "Check that the folder Morvance\\VY-KEL of the common application data folder is on a local disk."},
    {StatusCode::PluginNotInitialized, "PluginNotInitialized",
     "A plug-in was used before it was initialised.",
     "Try again; if it fails again, report the code and what --verbose adds."},
    {StatusCode::VersionMismatch, "VersionMismatch", "The library does not offer the interface of this tool.",
     "Install tool and library from the same release."},
};

constexpr Explanation ofPlugin = {StatusCode::Success, "a plug-in's own code",
                                  "A plug-in failed with a code that it defines itself.",
                                  "Look the code up in the plug-in's documentation."};

constexpr Explanation noKey = {StatusCode::ResourceNotFound, "ResourceNotFound",
                               "The registry key of the plug-ins cannot be found or read.",
                               "Run 'vykeldev setup' as administrator: it makes the key."};

const Explanation& explain(const std::string& action, std::int32_t code) noexcept {
    if (action == initialization && code == vykel::toInteger(noKey.code))
        return noKey;
    const auto* const found =
        std::find_if(std::begin(explanations), std::end(explanations), [code](const Explanation& candidate) {
            return vykel::toInteger(candidate.code) == code;
        });
    return found == std::end(explanations) ? ofPlugin : *found;
}

} // namespace

Failure currentFailure(const std::string& action) {
    try {
        throw;
    } catch (const Failure& failure) {
        return failure;
    } catch (const vyerr::ExceptionBase& exception) { // its text is a JSON document
        vykel::StatusBlock status = vykel::makeStatusBlock();
        vyerr::statusToBlock(exception.status(), &status);
        return statusFailure(action, status);
    } catch (const ConversionError& error) {
        return {error.what(), systemErrorText(error.code), freeMemory};
    } catch (const std::bad_alloc&) { // has no text for people
        return {"memory is exhausted", "", freeMemory};
    } catch (const std::exception& error) {
        return {error.what(), "", ""};
    } catch (...) {
        return {"an exception of an unknown type", "", ""};
    }
}

void printFailure(std::ostream& out, const std::string& label, const Failure& failure, bool verbose) {
    std::string text = label + printable(failure.what()) + '\n'; // whole, or nothing when that fails
    if (!failure.meaning.empty())
        text += "  meaning:    " + printable(failure.meaning) + '\n';
    if (!failure.remedy.empty())
        text += "  what to do: " + printable(failure.remedy) + '\n';
    if (verbose && !failure.raisedAt.empty())
        text += "  raised at:  " + printable(failure.raisedAt) + '\n';
    out << text;
}

Failure statusFailure(const std::string& action, const vykel::StatusBlock& status) {
    const Explanation& explanation = explain(action, status.code);
    return {action + " failed with " + std::to_string(status.code) + " (" + explanation.name + ")",
            explanation.meaning,
            explanation.remedy,
            status.code,
            explanation.name,
            placeIn(status)};
}

Failure statusFailure(const std::string& action, std::int32_t code) {
    vykel::StatusBlock status = vykel::makeStatusBlock();
    status.code = code;
    return statusFailure(action, status);
}

Failure systemFailure(const std::string& action, DWORD error, const std::string& remedy) {
    return {action + " failed with system error " + std::to_string(error), systemErrorText(error),
            error == ERROR_ACCESS_DENIED ? "Run the tool as administrator." : remedy};
}

} // namespace vykeldev
