#ifndef VYKELDEV_CHECK_RULES_H
#define VYKELDEV_CHECK_RULES_H

#include "system/Text.h"
#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

/// `vykeldev check`: whether a plug-in keeps its contract. Each rule runs in a process of its own, so a
/// plug-in that crashes, hangs or corrupts memory fails the rule that provoked it and no other.
namespace vykeldev::check {

class Trace;

/// A rule about what outlives a process leaves notes (see Trace::note) in the first process. It is then
/// called again in a second process, with these notes.
enum class Stage {
    First,
    Second, ///< The first passed.
    PutBack ///< The first did not pass: only puts back what it altered.
};

/// What is checked, and who is told what happens.
struct Subject {
    std::string path; ///< The plug-in, absolute, UTF-8.
    Trace& trace;
    Stage stage;
    std::vector<std::string> notes; ///< Those of the first stage.
};

/// The largest size of the notes of one rule: they are passed as an argument.
constexpr std::size_t maxNoteBytes = 4000;

enum class Severity {
    Warning, ///< The library copes with it, but somebody will be surprised.
    Error    ///< The library or its clients rely on it.
};

/// The check of a rule: returns when the rule is kept, throws Broken, Questionable or Skipped otherwise.
using Check = void(const Subject& subject);

/// One rule of the contract. docs/plugin-rules.md defines them all; the build makes check/Checks.h of it.
struct Rule {
    const char* id; ///< Stable: scripts may rely on it.
    const char* title;
    Severity severity;
    const char* needs; ///< The rule without which this one makes no sense, or an empty text.
    /// For a rule that alters what the plug-in keeps: the machine's lock file that is held meanwhile. Before
    /// it alters anything, such a rule notes the device's token, the old value and the new one. Otherwise
    /// empty.
    const char* lock;
    const char* meaning;
    const char* remedy;
    Check* check;

    bool alters() const noexcept { return *lock != '\0'; }
};

/// Ends a check whose rule did not pass. It is made from the parts of a text, which can be numbers, too.
struct Verdict {
    template <class... Parts>
    explicit Verdict(const Parts&... parts) : observed(concat(parts...)) {}
    std::string observed;
};

/// The rule is broken.
struct Broken : Verdict {
    using Verdict::Verdict;
};

/// The rule is broken because the plug-in returned a negative code.
struct Refused : Broken {
    using Broken::Broken;
};

/// The rule is broken in a way that may be intended: a warning, whatever the severity of the rule.
struct Questionable : Verdict {
    using Verdict::Verdict;
};

/// The rule cannot be judged here.
struct Skipped : Verdict {
    using Verdict::Verdict;
};

/// Null when there is none of that identifier.
const Rule* findRule(std::string_view id);

} // namespace vykeldev::check

#endif
