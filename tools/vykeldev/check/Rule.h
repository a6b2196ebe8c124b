#ifndef VYKELDEV_CHECK_RULE_H
#define VYKELDEV_CHECK_RULE_H

#include "output/Severity.h"
#include "system/Text.h"
#include "system/ToolCommand.h"
#include <cstddef>
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

/// The rule was not tried: a warning that says what to do about that.
struct NotTried : Questionable {
    template <class... Parts>
    explicit NotTried(std::string whatToDo, const Parts&... parts)
        : Questionable("not tried: ", parts...), remedy(typeable(std::move(whatToDo))) {}
    std::string remedy;
};

/// The rule cannot be judged here.
struct Skipped : Verdict {
    using Verdict::Verdict;
};

} // namespace vykeldev::check

#endif
