#ifndef INI_INIOUTPUT_H
#define INI_INIOUTPUT_H

#include <cstddef>
#include <cstdio>

namespace vyini {

/// Collects text and writes it to a borrowed stream in large pieces. One thread. After a failed write nothing
/// more is written.
class IniOutput {
public:
    explicit IniOutput(std::FILE* stream) noexcept : file(stream) {}
    IniOutput(const IniOutput&) = delete;
    IniOutput& operator=(const IniOutput&) = delete;

    /// Appends a text, every line feed as CR LF.
    void put(const char* text, std::size_t length) noexcept;

    void put(char c) noexcept { append(&c, 1); }
    void endLine() noexcept { append("\r\n", 2); }

    /// Writes what is left. False when this or an earlier write failed.
    bool finish() noexcept;

private:
    void append(const char* text, std::size_t length) noexcept;
    void writeOut() noexcept;

    std::FILE* file;
    std::size_t fill = 0;
    bool failed = false;
    char buffer[8192];
};

} // namespace vyini

#endif
