#ifndef VYKELDEV_CHILD_CHILDTASK_H
#define VYKELDEV_CHILD_CHILDTASK_H

#include "output/Json.h"
#include "system/Failure.h"
#include "system/Process.h"
#include <chrono>
#include <functional>
#include <initializer_list>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

/// Work that this program does in a child process of its own, so that whatever a plug-in does there (crash,
/// hang, exit, corrupt its memory) is seen and does no harm here. The child reports what happens in JSON
/// objects, one per line of standard output, each after a mark that no plug-in knows, and numbered, so that
/// a report that does not come is noticed.
namespace vykeldev {

/// The child's side: what reports go through. Any thread may report.
class Reporter {
public:
    explicit Reporter(std::string lineMark) : mark(std::move(lineMark)) {}

    /// The parent drops a longer line. This one holds two aliases, with JSON's escapes, of the length of a
    /// whole command line.
    static constexpr std::size_t maxLineBytes = 1 << 20;

    /// Writes one object, of less than that, before anything else can happen.
    void report(const Json& object);

    /// The same for one with texts of a plug-in, which may be of any length: cuts those that would make the
    /// line too long.
    void reportCut(Json object);

    /// Names what the child does next.
    void beginStep(const std::string& name) { report({{"step", name}}); }

private:
    const std::string mark;
    std::mutex mutex; // of the following
    std::size_t count = 0;
    const vybase::FileStream output = duplicateOutput(); // a plug-in may close standard output
};

/// A kind of work that a child can be started for. When it returns, all is done; what it throws is its
/// failure.
struct ChildTask {
    const char* name;
    void (*run)(const std::vector<std::string>& arguments, Reporter& reporter);
    const char* action = "a step of the library"; ///< What failed when the library's failure ends the task.
};

/// The child's side of all tasks: does the task that the program's arguments ask for. False when they ask for
/// none.
bool runRequestedTask(const std::vector<std::string>& arguments,
                      std::initializer_list<const ChildTask*> tasks);

/// How a child ended.
struct ChildOutcome {
    /// None: it was still running when its time was over, and was killed.
    std::optional<ChildProcess::End> end;
    std::chrono::milliseconds duration{0};
};

/// The parent's side: a child at work. The child is killed, with every process that it started, when this
/// object ends. One thread.
class TaskRun {
public:
    using ReportHandler = std::function<void(const Json& report)>;

    /// Whether Ctrl-C ends the work in this process: then the functions below throw Stopped.
    enum class CtrlC { Ends, Waits };

    /// Starts the child. Throws Failure. The functions below call `onReport` for each report; a report of
    /// other types than it reads is dropped.
    TaskRun(const ChildTask& task, const std::vector<std::string>& arguments, ReportHandler onReport,
            CtrlC onCtrlC = CtrlC::Ends);

    static constexpr std::chrono::milliseconds pollInterval{50};

    /// Takes the reports that come within `time`, which is at most pollInterval; returns after the first
    /// ones. Throws Failure.
    void listen(std::chrono::milliseconds time = pollInterval);

    /// Whether the task is done. Throws Failure: of the task, with its cause on this machine; of a report
    /// that got lost; or of a client of the library that ended too early.
    bool isDone() const;

    /// Whether no report got lost before the last one.
    bool isComplete() const noexcept { return noneLost; }

    /// What the time limit of finish() is for.
    enum class Limit { WholeTask, BetweenReports };

    /// Takes reports until the child ends or its time is over. Throws Failure. Call it once.
    ChildOutcome finish(std::chrono::milliseconds limit, Limit kind);

    /// The last step that the child began; empty before the first.
    const std::string& step() const noexcept { return lastStep; }

private:
    using Clock = std::chrono::steady_clock;
    void take(std::string_view line);

    const std::string mark;
    const ReportHandler handler;
    const CtrlC ctrlC;
    std::size_t reportCount = 0;
    bool noneLost = true;
    bool isRunning = true;
    bool isTaskDone = false;
    std::optional<Failure> failure; ///< Of the task.
    std::string lastStep;
    std::string bytes; ///< Of the output, from the last line that is not complete.
    const Clock::time_point begin = Clock::now();
    ChildProcess child;
};

} // namespace vykeldev

#endif
