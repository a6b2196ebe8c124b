#include "child/ChildProcess.h"

namespace vykeldev {

ChildOutcome runChild(const std::vector<std::string>& arguments, std::chrono::milliseconds limit,
                      const std::function<void(const std::string&)>& onLine) {
    return runChildWhileItProgresses(arguments, limit, [&](const std::string& line) {
        onLine(line);
        return false;
    });
}

} // namespace vykeldev
