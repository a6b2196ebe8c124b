#include "check/Trace.h"

#include <cstdio>
#include <nlohmann/json.hpp>

namespace vykeldev::check {

void Trace::calling(const char* operation) {
    if (!repeating_)
        write("calling", operation);
}

void Trace::repeating(const std::string& what) {
    write("calling", what);
    repeating_ = true;
}

void Trace::incident(const char* rule, const std::string& observed) {
    {
        const std::lock_guard<std::mutex> lock(mutex_);
        if (!incidents_.insert(rule + observed).second)
            return;
    }
    write("incident", rule, "observed", observed);
}

void Trace::exceptionLeft(const char* operation, const std::string& what) {
    incident("no-exception", "an exception left " + std::string(operation) + ": " + what);
    throw Skipped{"an exception left " + std::string(operation) + "; see 'no-exception'"};
}

void Trace::finished(Outcome outcome, const std::string& observed) {
    write("outcome", toString(outcome), "observed", observed);
}

void Trace::write(const char* key, const std::string& value, const char* secondKey,
                  const std::string& secondValue) {
    nlohmann::json line = {{key, value}};
    if (secondKey != nullptr)
        line[secondKey] = secondValue;
    // A line end before it, too: the plug-in may have printed half a line.
    const std::string text = "\n" + line.dump(-1, ' ', true, nlohmann::json::error_handler_t::replace) + "\n";
    std::fwrite(text.data(), 1, text.size(), stdout);
    std::fflush(stdout);
}

} // namespace vykeldev::check
