#include "check/Report.h"

#include "support/DisplayText.h"
#include "support/Text.h"
#include <iomanip>
#include <ostream>
#include <string_view>

namespace vykeldev::check {
namespace {

/// A text for an attribute or an element. XML 1.0 has no way to write U+FFFE and U+FFFF.
std::string escaped(const std::string& text) {
    static constexpr std::string_view escapes[][2] = {{"&", "&amp;"},
                                                      {"<", "&lt;"},
                                                      {">", "&gt;"},
                                                      {"\"", "&quot;"},
                                                      {"\xEF\xBF\xBE", "\xEF\xBF\xBD"},
                                                      {"\xEF\xBF\xBF", "\xEF\xBF\xBD"}};
    std::string result = printable(text);
    for (const auto& [from, to] : escapes)
        for (std::size_t at = result.find(from); at != std::string::npos;
             at = result.find(from, at + to.size()))
            result.replace(at, from.size(), to);
    return result;
}

std::string seconds(std::chrono::milliseconds duration) {
    return concat(std::fixed, std::setprecision(3), std::chrono::duration<double>(duration).count());
}

void printCase(std::ostream& out, const Result& result) {
    const Rule& rule = *result.rule;
    const std::string observed = escaped(result.observed);
    const std::string advice = escaped(std::string(rule.title) + ". " + rule.meaning + " " + rule.remedy);
    out << "    <testcase classname=\"vykeldev.check\" name=\"" << rule.id << "\" time=\""
        << seconds(result.duration) << '"';
    if (result.outcome == Outcome::Passed) {
        out << (result.lookedLess ? "><system-out>looked less often</system-out></testcase>\n" : "/>\n");
        return;
    }
    if (result.outcome == Outcome::Failed)
        out << "><failure message=\"" << observed << "\" type=\"" << rule.id << "\">" << advice
            << "</failure>";
    else if (result.outcome == Outcome::Warning)
        out << "><system-out>warning: " << observed << ". " << advice << "</system-out>";
    else
        out << "><skipped message=\"" << observed << "\"/>";
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
