#ifndef INI_INIOUTPUT_H
#define INI_INIOUTPUT_H

#include <cstddef>
#include <cstdio>
#include <cstring>

namespace vyini {

/// Collects text and writes it to a borrowed stream in large pieces. After a failed write it writes nothing
/// more. One thread uses it.
class IniOutput {
public:
    // The buffer is written before it is read.
    // cppcheck-suppress uninitMemberVar
    explicit IniOutput(std::FILE* stream) noexcept : file(stream) {}
    IniOutput(const IniOutput&) = delete;
    IniOutput& operator=(const IniOutput&) = delete;

    /// Appends a text, every line feed as CR LF.
    void put(const char* text, std::size_t length) noexcept {
        if (length <= sizeof(buffer) - fill && std::memchr(text, '\n', length) == nullptr) {
            std::memcpy(buffer + fill, text, length);
            fill += length;
        } else {
            putByCharacter(text, length);
        }
    }

    /// Appends one character as it is.
    void put(char c) noexcept {
        if (fill == sizeof(buffer))
            writeOut();
        buffer[fill++] = c;
    }

    /// Appends CR LF.
    void endLine() noexcept {
        put('\r');
        put('\n');
    }

    /// Writes what is left. False when this or an earlier write failed.
    bool finish() noexcept;

private:
    void putByCharacter(const char* text, std::size_t length) noexcept;
    void writeOut() noexcept;

    std::FILE* file;
    std::size_t fill = 0;
    bool failed = false;
    char buffer[16384];
};

} // namespace vyini

#endif
