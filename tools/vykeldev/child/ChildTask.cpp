#include "child/ChildTask.h"

#include "machine/Cause.h"
#include "output/Failures.h"
#include "system/Console.h"
#include "system/Text.h"
#include <algorithm>
#include <cstdio>
#include <random>

namespace vykeldev {
namespace {

constexpr const char* hiddenCommand = "child-task";

std::string makeMark() {
    std::random_device random;
    return "vykeldev-" + std::to_string(random()) + std::to_string(random()) + ":";
}

std::vector<std::string> taskArguments(const char* task, const std::string& mark,
                                       std::vector<std::string> arguments) {
    arguments.insert(arguments.begin(), {hiddenCommand, task, mark});
    return arguments;
}

void cutTexts(Json& json) {
    constexpr std::size_t maxTextBytes = 5000; // enough for people; far below what fits into a line
    if (json.is_string() && json.get_ref<const std::string&>().size() > maxTextBytes)
        json = json.get<std::string>().substr(0, maxTextBytes) + "...";
    else if (json.is_structured())
        for (Json& each : json)
            cutTexts(each);
}

} // namespace

void Reporter::reportCut(Json object) {
    cutTexts(object);
    report(object);
}

void Reporter::report(const Json& object) {
    const std::lock_guard<std::mutex> lock(mutex);
    // A line end before it, too: the plug-in may have printed half a line.
    const std::string text = "\n" + mark + textOf({count++, object}, -1) + "\n";
    std::fwrite(text.data(), 1, text.size(), output.get());
    std::fflush(output.get());
}

bool runRequestedTask(const std::vector<std::string>& arguments,
                      std::initializer_list<const ChildTask*> tasks) {
    if (arguments.size() < 3 || arguments[0] != hiddenCommand)
        return false;
    for (const ChildTask* const task : tasks) {
        if (arguments[1] != task->name)
            continue;
        suppressCrashDialogs();
        Reporter reporter(arguments[2]);
        try {
            task->run({arguments.begin() + 3, arguments.end()}, reporter);
            reporter.report({{"done", true}});
        } catch (...) {
            reporter.report({{"failed", currentFailure(task->action)}});
        }
        return true;
    }
    return false;
}

TaskRun::TaskRun(const ChildTask& task, const std::vector<std::string>& arguments, ReportHandler onReport,
                 CtrlC onCtrlC)
    : mark(makeMark()), handler(std::move(onReport)), ctrlC(onCtrlC),
      child(taskArguments(task.name, mark, arguments)) {}

void TaskRun::listen(std::chrono::milliseconds time) {
    if (ctrlC == CtrlC::Ends && StopRequest::isMade())
        throw Stopped();
    isRunning = child.read(bytes, time);
    std::size_t first = 0;
    for (std::size_t end = 0; (end = bytes.find('\n', first)) != std::string::npos; first = end + 1)
        take(std::string_view(bytes).substr(first, end - first));
    bytes.erase(0, first);
    if (bytes.size() > Reporter::maxLineBytes) // a flood without line ends costs little memory
        bytes.clear();
}

bool TaskRun::isDone() const {
    if (failure)
        throw *failure;
    if (!noneLost)
        throw Failure("a report about the devices got lost",
                      "A plug-in prints, or a text is too long. What was to be changed may be changed.",
                      "Run 'vykeldev doctor': it tries each plug-in by itself.");
    if (isRunning || isTaskDone)
        return isTaskDone;
    const auto [crashed, code] = child.end();
    throw Failure(concat("the client process ",
                         crashed ? "crashed with " + crashText(code) : concat("ended with exit code ", code),
                         lastStep.empty() ? "" : " while ", lastStep),
                  "Most likely a plug-in did it, and does it to every client.",
                  "Run 'vykeldev doctor --devices': it names the plug-in.");
}

ChildOutcome TaskRun::finish(std::chrono::milliseconds limit, Limit kind) {
    auto limitBegin = Clock::now();
    for (auto left = limit; isRunning && left.count() > 0;) {
        const std::size_t before = reportCount;
        listen(std::min(left, pollInterval));
        if (kind == Limit::BetweenReports && reportCount != before)
            limitBegin = Clock::now();
        left = std::chrono::ceil<std::chrono::milliseconds>(limitBegin + limit - Clock::now());
    }
    const auto duration = std::chrono::duration_cast<std::chrono::milliseconds>(Clock::now() - begin);
    return {isRunning ? std::nullopt : std::optional(child.end()), duration};
}

void TaskRun::take(std::string_view line) {
    if (line.substr(0, mark.size()) != mark)
        return; // the plug-in prints, too
    try {
        const Json numbered = Json::parse(line.substr(mark.size()));
        const Json& report = numbered.at(1);
        noneLost = numbered.at(0) == reportCount++ && noneLost;
        isTaskDone = report.value("done", false);
        lastStep = report.value("step", lastStep);
        if (report.contains("failed"))
            failure = withCause(report["failed"]);
        handler(report);
    } catch (const Json::exception&) {
        // The plug-in printed into this line.
    }
}

} // namespace vykeldev
