#include "machine/Finding.h"

#include <algorithm>
#include <iterator>

namespace vykeldev {
namespace {

/// A plug-in's name as one argument in any shell; "NAME" when it is none, or would need more than quotes.
std::string asArgument(const std::string& name) {
    constexpr auto isPlain = [](char c) {
        const bool isLetter = (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z');
        return isLetter || (c >= '0' && c <= '9') || c == '-' || c == '_' || c == '.';
    };
    if (name.empty() || name.front() == '-' ||
        !std::all_of(name.begin(), name.end(), [&](char c) { return isPlain(c) || c == ' '; }))
        return "NAME";
    return std::all_of(name.begin(), name.end(), isPlain) ? name : '"' + name + '"';
}

} // namespace

std::string FindingKind::remedyFor(const std::string& subject) const {
    std::string text = remedy[0];
    for (std::size_t i = 1; i < std::size(remedy) && remedy[i] != nullptr; ++i)
        text += asArgument(subject) + remedy[i];
    return text;
}

} // namespace vykeldev
