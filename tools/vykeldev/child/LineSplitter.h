#ifndef VYKELDEV_CHILD_LINESPLITTER_H
#define VYKELDEV_CHILD_LINESPLITTER_H

#include <cstddef>
#include <functional>
#include <string>

namespace vykeldev {

/// Cuts a stream of bytes into lines without their ends (LF or CR LF). Keeps only the beginning of a line
/// that is longer than any reader expects, so that a flood without line ends costs little memory.
class LineSplitter {
public:
    /// Holds two aliases, with JSON's escapes, of the length of a whole command line.
    static constexpr std::size_t maxLineBytes = 1 << 20;

    explicit LineSplitter(std::function<void(const std::string&)> lineHandler)
        : onLine(std::move(lineHandler)) {}

    void add(const char* bytes, std::size_t count) {
        for (const char* const end = bytes + count; bytes != end; ++bytes)
            if (*bytes == '\n')
                finish();
            else if (line.size() < maxLineBytes)
                line += *bytes;
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
