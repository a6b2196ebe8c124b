#include "doctor/Finding.h"

#include <algorithm>

namespace vykeldev::doctor {
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

std::string Finding::whatToDo() const {
    const std::string name = "register NAME"; // also the end of "unregister NAME"
    std::string text = remedy.empty() ? kind->remedy : remedy;
    for (std::size_t at = text.find(name); at != std::string::npos; at = text.find(name, at + 1))
        text.replace(at, name.size(), "register " + asArgument(subject));
    return text;
}

} // namespace vykeldev::doctor
