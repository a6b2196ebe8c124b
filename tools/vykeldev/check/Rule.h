#ifndef VYKELDEV_CHECK_RULE_H
#define VYKELDEV_CHECK_RULE_H

#include <string>
#include <string_view>
#include <vector>

/// `vykeldev check`: whether a plug-in keeps its contract. Each rule runs in a process of its own, so a
/// plug-in that crashes, hangs or corrupts memory fails the rule that provoked it and no other.
namespace vykeldev::check {

class Trace;

/// What is checked, and where what happens is told.
struct Subject {
    std::string path; ///< The plug-in, absolute, UTF-8.
    Trace& trace;
};

enum class Severity {
    Warning, ///< The library gets along with it, but somebody will be surprised.
    Error    ///< The library or its clients rely on it.
};

/// One rule of the contract. Texts are for people.
struct Rule {
    const char* id; ///< Stable: scripts may rely on it.
    const char* title;
    Severity severity;
    const char* needs; ///< The rule without which this one makes no sense, or an empty text.
    bool alters;       ///< Changes what the plug-in keeps, and puts it back.
    const char* meaning;
    const char* remedy;
    /// Returns when the rule is kept, throws Broken or Skipped otherwise.
    void (*check)(const Subject& subject);
};

/// The rule is broken.
struct Broken {
    std::string observed;
    bool onlyWarning = false; ///< Less serious than the rule itself.
};

/// The rule cannot be judged here.
struct Skipped {
    std::string reason;
};

/// All rules, each with an identifier of its own, behind the one that it needs.
const std::vector<Rule>& allRules();

/// Null when there is none of that identifier.
const Rule* findRule(std::string_view id);

} // namespace vykeldev::check

#endif
