#include "ini/IniOutput.h"

namespace vyini {

bool IniOutput::finish() noexcept {
    writeOut();
    return !failed;
}

void IniOutput::putByCharacter(const char* text, std::size_t length) noexcept {
    for (const char* end = text + length; text != end; ++text) {
        if (*text == '\n')
            put('\r');
        put(*text);
    }
}

void IniOutput::writeOut() noexcept {
    failed = failed || std::fwrite(buffer, 1, fill, file) != fill;
    fill = 0;
}

} // namespace vyini
