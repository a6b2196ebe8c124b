#ifndef VYKELDEV_CHECK_RULE_H
#define VYKELDEV_CHECK_RULE_H

#include "output/Severity.h"
#include "system/Text.h"
#include "system/ToolCommand.h"
#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

/// `vykeldev check`: whether a plug-in keeps its contract. Each rule runs in a process of its own, so a
/// plug-in that crashes, hangs or corrupts memory fails the rule that provoked it and no other.
namespace vykeldev::check {

class Trace;

/// Rules that test persistence run twice, each time in a new process; notes carry state (see Trace::note).
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

/// The check of a rule: returns when the rule is kept, throws Broken, Questionable or Skipped otherwise.
using Check = void(const Subject& subject);

/// One rule of the contract. Texts are for people.
struct Rule {
    const char* id; ///< Stable: scripts may rely on it.
    const char* title;
    Severity severity; ///< An error: the library or its clients rely on it. A warning: the library copes.
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

/// What came out of a rule. A warning: it is broken, but the library copes with that, or it may be intended.
/// Unknown: this tool failed, so no rule has that in a report.
enum class Outcome { Passed, Warning, Failed, Skipped, Unknown };

/// What came out of a check. One that did not pass ends by throwing it.
struct Verdict {
    Outcome outcome = Outcome::Failed; ///< When an error is what the rule's severity says.
    std::string observed = {};         ///< What broke the rule, or why it was skipped.
    std::string remedy = {};           ///< What to do about a rule that was not tried.
};

/// A verdict that is made from the parts of a text, which can be numbers, too.
template <Outcome ofAll>
struct VerdictOf : Verdict {
    template <class... Parts>
    explicit VerdictOf(const Parts&... parts) : Verdict{ofAll, concat(parts...)} {}
};

/// The rule is broken.
using Broken = VerdictOf<Outcome::Failed>;

/// Ends the check when a code is negative: with a verdict that is made from the parts and the code.
template <class Refusal, class... Parts>
void mustAccept(std::int32_t code, const Parts&... parts) {
    if (code < 0)
        throw Refusal(parts..., code);
}

/// The rule is broken in a way that may be intended: a warning, whatever the severity of the rule.
using Questionable = VerdictOf<Outcome::Warning>;

/// The rule was not tried: a warning that says what to do about that, and why in the parts.
template <class... Parts>
Verdict notTried(const std::string& whatToDo, const Parts&... parts) {
    return {Outcome::Warning, concat("not tried: ", parts...), typeable(whatToDo)};
}

/// The rule cannot be judged here.
using Skipped = VerdictOf<Outcome::Skipped>;

} // namespace vykeldev::check

#endif
