#include "ini/IniLoad.h"

#include "ini/IniFile.h"
#include "vybase/owners.h"
#include <cstring>

namespace vyini {

namespace {

/// Where the text begins after a byte-order mark, or IniWideText.
int findTextStart(const unsigned char* bytes, std::size_t count) noexcept {
    if (count == 4 &&
        (std::memcmp(bytes, "\xFF\xFE\0\0", 4) == 0 || std::memcmp(bytes, "\0\0\xFE\xFF", 4) == 0))
        return IniWideText;
    if (count >= 3 && std::memcmp(bytes, "\xEF\xBB\xBF", 3) == 0)
        return 3;
    if (count >= 2 && (std::memcmp(bytes, "\xFF\xFE", 2) == 0 || std::memcmp(bytes, "\xFE\xFF", 2) == 0))
        return IniWideText;
    return 0;
}

} // namespace

int loadIniFile(IniDocument* document, const char* path, const IniSkippedLineObserver* observer) noexcept {
    const char* name = path != nullptr ? path : "";
    const vybase::FileStream file(std::fopen(name, "rb"));
    if (file == nullptr)
        return findFile(name, nullptr) ? IniOpenFailed : IniNoFile;
    IniFileFacts facts;
    findFile(name, &facts);

    unsigned char mark[4] = {};
    const int start = findTextStart(mark, std::fread(mark, 1, sizeof(mark), file.get()));
    if (start < 0)
        return start;
    if (std::fseek(file.get(), start, SEEK_SET) != 0)
        return IniSeekFailed;
    IniString kept = copyText(name, std::strlen(name)); // `path` may be the document's own
    if (kept == nullptr)
        return IniMemoryFull;
    IniLineReader reader(file.get(), facts.size);
    const int result = parseIni(document, &reader, observer);
    if (result == 0) {
        document->path = std::move(kept);
        document->lastWriteTime = facts.lastWriteTime;
    }
    return result;
}

} // namespace vyini
