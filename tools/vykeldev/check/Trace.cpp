#include "check/Trace.h"

#include <chrono>
#include <cstdio>
#include <nlohmann/json.hpp>

namespace vykeldev::check {

using Json = nlohmann::json;

Trace::Trace(std::string mark) : mark_(std::move(mark)), progress_([this] { tellProgress(); }) {}

Trace::~Trace() {
    {
        const std::lock_guard<std::mutex> lock(mutex_);
        ended_ = true;
    }
    end_.notify_one();
    progress_.join();
}

void Trace::calling(const char* operation) {
    ++calls_;
    if (!repeating_)
        write(Json{{"calling", operation}});
}

void Trace::repeating(const std::string& what) {
    ++calls_;
    write(Json{{"calling", what}});
    repeating_ = true;
}

void Trace::note(const std::vector<std::string>& notes) {
    write(Json{{"notes", notes}});
}

void Trace::putBack() {
    write(Json{{"putBack", true}});
}

void Trace::incident(const char* rule, const std::string& observed) {
    {
        const std::lock_guard<std::mutex> lock(mutex_);
        if (!incidents_.insert(rule + observed).second)
            return;
    }
    write(Json{{"incident", rule}, {"observed", observed}});
}

void Trace::exceptionLeft(const char* operation, const std::string& what) {
    incident("no-exception", "an exception left " + std::string(operation) + ": " + what);
    throw Skipped{"an exception left " + std::string(operation) + "; see 'no-exception'"};
}

void Trace::finished(Outcome outcome, const std::string& observed) {
    write(Json{{"outcome", toString(outcome)}, {"observed", observed}});
}

void Trace::toolFailed(const std::string& what) {
    write(Json{{"toolFailed", what}});
}

template <class Line>
void Trace::write(const Line& line) {
    // A line end before it, too: the plug-in may have printed half a line.
    const std::string text = "\n" + mark_ + line.dump(-1, ' ', true, Json::error_handler_t::replace) + "\n";
    std::fwrite(text.data(), 1, text.size(), stdout);
    std::fflush(stdout);
}

void Trace::tellProgress() {
    constexpr std::chrono::milliseconds interval(100);
    std::unique_lock<std::mutex> lock(mutex_);
    std::uint64_t told = 0;
    while (!end_.wait_for(lock, interval, [this] { return ended_; })) {
        if (const std::uint64_t calls = calls_; calls != told) {
            told = calls;
            write(Json{{"progress", calls}});
        }
    }
}

} // namespace vykeldev::check
