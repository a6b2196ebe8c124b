#ifndef VYKELDEV_CHECK_TRACE_H
#define VYKELDEV_CHECK_TRACE_H

#include "check/Result.h"
#include <exception>
#include <mutex>
#include <set>
#include <string>

namespace vykeldev::check {

/// Tells the parent process what a rule is doing, one JSON object a line, so that the last words of a plug-in
/// that crashes or hangs are known. Any thread may call.
class Trace {
public:
    /// Makes a call into the plug-in. When an exception comes out, that is an incident of its own, and the
    /// rule at work is skipped (throws Skipped).
    template <class Call>
    decltype(auto) call(const char* operation, Call&& intoPlugin) {
        calling(operation);
        std::string escaped;
        try {
            return intoPlugin();
        } catch (const std::exception& exception) {
            escaped = exception.what(); // copied: the object may go with its plug-in
        } catch (...) {
            escaped = "of no standard type";
        }
        exceptionLeft(operation, escaped);
    }

    /// Says once what the many calls from here on are for, and no longer names each.
    void repeating(const std::string& what);

    /// A rule other than the one at work turns out to be broken.
    void incident(const char* rule, const std::string& observed);

    void finished(Outcome outcome, const std::string& observed);

private:
    void calling(const char* operation);
    [[noreturn]] void exceptionLeft(const char* operation, const std::string& what);
    void write(const char* key, const std::string& value, const char* secondKey = nullptr,
               const std::string& secondValue = {});

    bool repeating_ = false;
    std::mutex mutex_;
    std::set<std::string> incidents_; // each is told once
};

} // namespace vykeldev::check

#endif
