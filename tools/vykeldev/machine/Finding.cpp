#include "machine/Finding.h"

#include <iterator>

namespace vykeldev {
namespace {

/// A plug-in's name as one argument in any shell; "NAME" when it is none, or would need more than quotes.
std::string asArgument(const std::string& name) {
    constexpr const char* plain = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789-_. ";
    if (name.empty() || name.front() == '-' || name.find_first_not_of(plain) != std::string::npos)
        return "NAME";
    return name.find(' ') == std::string::npos ? name : '"' + name + '"';
}

} // namespace

std::string FindingKind::remedyFor(const std::string& subject) const {
    std::string text = remedy[0];
    for (std::size_t i = 1; i < std::size(remedy) && remedy[i] != nullptr; ++i)
        text += asArgument(subject) + remedy[i];
    return text;
}

} // namespace vykeldev
