#include "output/Failures.h"

#include "errors/Exception.h"
#include "output/StatusTable.h"
#include "system/DisplayText.h"
#include "system/System.h"
#include "system/Text.h"
#include "vykel/StatusCodes.h"
#include <algorithm>
#include <new>
#include <ostream>

namespace vykeldev {
namespace {

constexpr Explanation ofPlugin = {0, "a plug-in's own code",
                                  "A plug-in failed with a code that it defines itself.",
                                  "Look the code up in the plug-in's documentation."};

const Explanation& explain(std::int32_t code) noexcept {
    for (const Explanation& each : statusTable)
        if (each.code == code)
            return each;
    return ofPlugin;
}

/// File and line, as in "left.devices:3". In a plug-in's block they may be those of its own data.
std::string placeIn(const vykel::StatusBlock& status) {
    // A faulty writer may have left the text without its end.
    const auto* const end = std::find(std::begin(status.file), std::end(status.file), '\0');
    const std::string file = printable(std::string(status.file, end));
    return file.empty() || status.line == 0 ? file : file + ":" + std::to_string(status.line);
}

} // namespace

std::string originText(const vykel::StatusBlock& status) {
    const std::string place = placeIn(status);
    return place.empty() ? "" : "; the plug-in names " + place;
}

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
    const Explanation& explanation = explain(status.code);
    return {concat(action, " failed with ", status.code, " (", explanation.name, ")"),
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

} // namespace vykeldev
