#include "ini/IniWriter.h"

#include "ini/IniOutput.h"
#include <algorithm>
#include <charconv>
#include <cstring>

namespace vyini {

namespace {

class Writer {
public:
    Writer(const IniDocument& source, std::FILE* file) noexcept
        : document(source), output(file), spaced((source.writeFlags & IniSpacedEquals) != 0) {}

    int write() noexcept {
        const bool rules = (document.writeFlags & IniBlankLineRules) != 0;
        const IniSection* previous = nullptr;
        for (const IniSection* section = document.sections.first(); section != nullptr;
             section = section->next) {
            const bool headerless = std::strcmp(section->name, headerlessSection) == 0;
            if (rules && section->line == -1 && previous != nullptr && previous->line >= 0)
                output.endLine();
            if (!headerless)
                writeHeader(*section);
            for (const IniEntry* entry = section->entries.first(); entry != nullptr; entry = entry->next)
                if (writeEntry(*entry) != 0)
                    return output.finish() ? IniKeyTooLong : IniWriteFailed;
            if (!rules || !(section->line != -1 || headerless))
                output.endLine();
            previous = section;
        }
        return output.finish() ? 0 : IniWriteFailed;
    }

private:
    void writeHeader(const IniSection& section) noexcept {
        output.put('[');
        output.put(section.name, std::strlen(section.name));
        output.put(']');
        output.endLine();
    }

    int writeEntry(const IniEntry& entry) noexcept {
        const std::size_t keyLength = std::strlen(entry.key);
        const std::size_t valueLength = std::strlen(entry.value);
        const std::size_t quotes = entry.quote != 0 ? 2 : 0;
        const auto length = static_cast<std::int64_t>(keyLength + (spaced ? 3 : 1) + valueLength + quotes);
        if (document.maxLineLength == -1 || length <= document.maxLineLength) {
            output.put(entry.key, keyLength);
            writeValue(entry.value, valueLength, entry.quote);
            return 0;
        }
        const std::size_t around = keyLength + numberRoom + quotes;
        const std::int64_t room = document.maxLineLength - static_cast<std::int64_t>(around);
        return room > 0 ? split(entry, keyLength, valueLength, static_cast<std::size_t>(room))
                        : IniKeyTooLong;
    }

    void writeValue(const char* value, std::size_t length, std::uint8_t quote) noexcept {
        if (spaced)
            output.put(" = ", 3);
        else
            output.put('=');
        if (quote != 0)
            output.put(static_cast<char>(quote));
        output.put(value, length);
        if (quote != 0)
            output.put(static_cast<char>(quote));
        output.endLine();
    }

    /// Writes the value in continuation entries, at most `room` bytes in each.
    int split(const IniEntry& entry, std::size_t keyLength, std::size_t valueLength,
              std::size_t room) noexcept {
        const char* rest = entry.value;
        const char* end = rest + valueLength;
        for (std::uint32_t number = 1; rest != end; ++number) {
            char digits[16] = "000";
            const char* digitsEnd = std::to_chars(digits + 3, digits + sizeof(digits), number).ptr;
            const char* firstDigit = std::min<const char*>(digits + 3, digitsEnd - 4);
            const auto digitCount = static_cast<std::size_t>(digitsEnd - firstDigit);
            // More than four digits take their room from the piece, but never all of it.
            const std::size_t maxPiece = room - std::min(digitCount - 4, room - 1);
            const std::size_t piece = measurePiece(rest, static_cast<std::size_t>(end - rest), maxPiece);
            output.put(entry.key, keyLength);
            output.put(" Line", 5);
            output.put(firstDigit, digitCount);
            writeValue(rest, piece, entry.quote);
            rest += piece;
        }
        return 0;
    }

    /// Length of the next piece: up to the last splitChar that fits, or else as much as fits.
    std::size_t measurePiece(const char* text, std::size_t length, std::size_t maxPiece) const noexcept {
        if (length <= maxPiece)
            return length;
        if (document.splitChar != 0) {
            for (std::size_t piece = maxPiece; piece != 0; --piece)
                if (text[piece - 1] == static_cast<char>(document.splitChar))
                    return piece;
        }
        return maxPiece;
    }

    static constexpr std::size_t numberRoom = 12; // " Line", four digits and the longer separator

    const IniDocument& document;
    IniOutput output;
    bool spaced;
};

} // namespace

int writeIni(const IniDocument* document, std::FILE* file) noexcept {
    return Writer(*document, file).write();
}

} // namespace vyini
