#ifndef VYKELDEV_CHILD_LINESPLITTER_H
#define VYKELDEV_CHILD_LINESPLITTER_H

#include <cstddef>
#include <functional>
#include <string>

namespace vykeldev {

/// Cuts a stream of bytes into lines without their ends (LF or CR LF). Keeps only the beginning of a line
/// that is longer than any reader expects, so that a flood without line ends costs no memory.
class LineSplitter {
public:
    static constexpr std::size_t maxLineBytes = 65536;

    explicit LineSplitter(std::function<void(const std::string&)> lineHandler)
        : onLine(std::move(lineHandler)) {}

    void add(const char* bytes, std::size_t count) {
        for (const char* const end = bytes + count; bytes != end; ++bytes)
            if (*bytes == '\n')
                finish();
            else if (line.size() < maxLineBytes)
                line += *bytes;
    }

    /// Hands out a last line that has no end.
    void end() {
        if (!line.empty())
            finish();
    }

private:
    void finish() {
        if (!line.empty() && line.back() == '\r')
            line.pop_back();
        std::string complete;
        complete.swap(line);
        onLine(complete);
    }

    std::function<void(const std::string&)> onLine;
    std::string line;
};

} // namespace vykeldev

#endif
