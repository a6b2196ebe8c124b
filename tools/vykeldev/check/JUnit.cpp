#include "check/Report.h"

#include "support/Text.h"
#include <cstdio>
#include <ostream>

namespace vykeldev::check {
namespace {

/// A text for an attribute or an element: without the characters that XML 1.0 does not know even escaped.
std::string escaped(const std::string& text) {
    std::string result;
    for (const char character : printable(text)) {
        switch (character) {
        case '&':
            result += "&amp;";
            break;
        case '<':
            result += "&lt;";
            break;
        case '>':
            result += "&gt;";
            break;
        case '"':
            result += "&quot;";
            break;
        default:
            result += character;
        }
        // U+FFFE and U+FFFF become U+FFFD.
        const std::size_t size = result.size();
        if (size >= 3 && (result.compare(size - 3, 3, "\xEF\xBF\xBE") == 0 || //
                          result.compare(size - 3, 3, "\xEF\xBF\xBF") == 0))
            result.back() = '\xBD';
    }
    return result;
}

std::string seconds(std::chrono::milliseconds duration) {
    char text[32];
    std::snprintf(text, sizeof text, "%lld.%03d", static_cast<long long>(duration.count() / 1000),
                  static_cast<int>(duration.count() % 1000));
    return text;
}

void printCase(std::ostream& out, const Result& result) {
    const Rule& rule = *result.rule;
    const std::string observed = escaped(result.observed);
    const std::string advice = escaped(std::string(rule.title) + ". " + rule.meaning + " " + rule.remedy);
    out << "    <testcase classname=\"vykeldev.check\" name=\"" << rule.id << "\" time=\""
        << seconds(result.duration) << '"';
    switch (result.outcome) {
    case Outcome::Passed:
        out << "/>\n";
        return;
    case Outcome::Failed:
        out << "><failure message=\"" << observed << "\" type=\"" << rule.id << "\">" << advice
            << "</failure>";
        break;
    case Outcome::Warning:
        out << "><system-out>warning: " << observed << ". " << advice << "</system-out>";
        break;
    case Outcome::Skipped:
        out << "><skipped message=\"" << observed << "\"/>";
        break;
    }
    out << "</testcase>\n";
}

} // namespace

void printJUnit(std::ostream& out, const std::string& plugin, const Results& results) {
    std::chrono::milliseconds total{0};
    for (const Result& result : results)
        total += result.duration;
    out << "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<testsuites>\n  <testsuite name=\"" << escaped(plugin)
        << "\" tests=\"" << results.size() << "\" failures=\"" << countOf(results, Outcome::Failed)
        << "\" errors=\"0\" skipped=\"" << countOf(results, Outcome::Skipped) << "\" time=\""
        << seconds(total) << "\">\n";
    for (const Result& result : results)
        printCase(out, result);
    out << "  </testsuite>\n</testsuites>\n";
}

} // namespace vykeldev::check
