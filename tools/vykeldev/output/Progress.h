#ifndef VYKELDEV_OUTPUT_PROGRESS_H
#define VYKELDEV_OUTPUT_PROGRESS_H

#include "system/Console.h"
#include "system/DisplayText.h"
#include "vytpl/NonCopyable.h"
#include <algorithm>
#include <iostream>
#include <string>

namespace vykeldev {

/// One line on standard error that says what the tool waits for; removed at the end. Only on a terminal.
class Progress : private vytpl::NonCopyableT<Progress> {
public:
    explicit Progress(bool wanted = true) : shown(wanted && isErrorTerminal()) {}
    ~Progress() { show({}); }

    /// Replaces the line.
    void show(const std::string& text) {
        constexpr std::size_t width = 78;
        if (!shown)
            return;
        const std::string line = printable(text);
        std::cerr << '\r' << (displayWidth(line) > width ? std::string("...") : line);
        std::cerr << std::string(width - std::min(width, displayWidth(line)), ' ') << '\r' << std::flush;
    }

private:
    bool shown;
};

} // namespace vykeldev

#endif
