#include "machine/Finding.h"

#include <iterator>

namespace vykeldev {

std::string FindingKind::remedyFor(const std::string& subject) const {
    constexpr const char* plain = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789-_. ";
    // One argument in any shell; there is none for a name that needs more than quotes.
    std::string argument = subject.find(' ') == std::string::npos ? subject : '"' + subject + '"';
    if (subject.empty() || subject.front() == '-' || subject.find_first_not_of(plain) != std::string::npos)
        argument = "NAME";
    std::string text = remedy[0];
    for (std::size_t i = 1; i < std::size(remedy) && remedy[i] != nullptr; ++i)
        text += argument + remedy[i];
    return text;
}

} // namespace vykeldev
