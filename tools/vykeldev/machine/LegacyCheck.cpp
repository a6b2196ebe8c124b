#include "machine/LegacyCheck.h"

#include "ini/IniWriter.h"
#include "machine/Findings.h"
#include "machine/LegacyFile.h"
#include "system/Files.h"
#include "system/Paths.h"
#include "system/System.h"
#include "system/Text.h"
#include <algorithm>
#include <map>
#include <new>

namespace vykeldev {
namespace {

/// The findings about one file, of each kind only as many as people read.
class LegacyFindings {
public:
    LegacyFindings(std::string filePath, Findings& all) : path(std::move(filePath)), findings(all) {}

    void add(const FindingKind* kind, int line, const std::string& detail, const std::string& remedy = "") {
        constexpr std::size_t maxDetailBytes = 200;
        if (++counts[kind] <= maxPerKind)
            findings.push_back({kind, path, detail.substr(0, maxDetailBytes), line, remedy});
    }

    /// Reports how many were left out.
    void finish() {
        for (const FindingKind* const kind : finding::all)
            if (const std::size_t count = counts[kind]; count > maxPerKind)
                findings.push_back({kind, path, std::to_string(count - maxPerKind) + " more"});
    }

private:
    static constexpr std::size_t maxPerKind = 20;

    std::string path;
    Findings& findings;
    std::map<const FindingKind*, std::size_t> counts;
};

struct Trouble {
    std::string detail; ///< Empty: there is none.
    std::string remedy;
};

/// Why a transfer could not save the file. It replaces the file, so it needs the right to delete it. It
/// writes a new file beside it, after it has removed what has the name of that.
Trouble savingTrouble(const std::string& path, bool folderWritable) {
    if (!openFile(path, GENERIC_READ | GENERIC_WRITE | DELETE, OPEN_EXISTING)) {
        const DWORD error = GetLastError();
        if (hasAttribute(path, FILE_ATTRIBUTE_READONLY))
            return {"it is read-only", "Run 'attrib -r \"" + path + "\"'."};
        return {"it cannot be replaced: " + systemErrorText(error), remedyOfOpening(error)};
    }
    const vyini::IniString name = vyini::nameTempByExtension(path.c_str());
    if (name == nullptr)
        throw std::bad_alloc();
    const std::string temporary = name.get();
    if (isFolder(temporary))
        return {"'" + temporary + "', where the new file is to be written, is a folder",
                "Move that folder away."};
    if (hasAttribute(temporary, FILE_ATTRIBUTE_READONLY))
        return {"'" + temporary + "' is in the way and read-only", "Delete that file."};
    if (!folderWritable)
        return {"no new file can be made beside it", remedyOfOpening(ERROR_ACCESS_DENIED)};
    return {};
}

void checkContent(const LegacyFile& file, LegacyFindings& findings, const Trouble& trouble) {
    static constexpr const FindingKind* kinds[] = {&finding::legacyMalformed, &finding::legacyOtherLayout,
                                                   &finding::legacyBehindGap, &finding::legacyResourceName,
                                                   &finding::legacyNotLocal,  &finding::legacyDuplicate};
    for (const LegacyLine& line : file.skippedLines)
        findings.add(&finding::legacyLineIgnored, line.number, line.text);
    bool canMove = false;
    for (const LegacyEntry& entry : file.entries()) {
        canMove = canMove || entry.flaw == Flaw::None;
        if (entry.flaw == Flaw::None)
            continue;
        const std::string text =
            entry.alias.value_or("(no alias)") + " = " + entry.target.value_or("(no token)");
        findings.add(kinds[static_cast<std::size_t>(entry.flaw) - 1], entry.line,
                     entry.detail.empty() ? text : entry.detail + " (" + text + ")");
    }
    if (canMove && !trouble.detail.empty())
        findings.add(&finding::legacyNotWritable, 0, trouble.detail, trouble.remedy);
}

} // namespace

std::string remedyOfOpening(DWORD error) {
    return error == ERROR_SHARING_VIOLATION
               ? "Close the program that holds the file open."
               : "Run 'vykeldev setup --reset-rights' as administrator: it lets every user read and write in "
                 "the folder.";
}

void checkLegacyFile(FolderReport& report, bool folderWritable) {
    LegacyState& state = report.legacy;
    const LegacyFile file(state.path);
    state.state = "none";
    if (file.result == vyini::IniNoFile)
        return;
    std::string bytes;
    const DWORD error = readFile(state.path, bytes);
    LegacyFindings findings(state.path, report.findings);
    state.state = "unreadable";
    const auto zeros = static_cast<std::size_t>(std::count(bytes.begin(), bytes.end(), '\0'));
    if (file.result == vyini::IniWideText ||
        zeros > bytes.size() / 4) { // UTF-16 may lack its byte-order mark
        findings.add(&finding::legacyEncoding, 0, "");
    } else if (file.result != 0 && isFolder(state.path)) {
        findings.add(&finding::legacyUnreadable, 0, "a folder has its name", "Move the folder away.");
    } else if (file.result != 0 && (error == ERROR_ACCESS_DENIED || error == ERROR_SHARING_VIOLATION)) {
        findings.add(&finding::legacyUnreadable, 0, systemErrorText(error), remedyOfOpening(error));
    } else if (file.result != 0) {
        findings.add(&finding::legacyUnreadable, 0,
                     error != ERROR_SUCCESS ? systemErrorText(error)
                                            : "reading it gives " + std::to_string(file.result));
    } else {
        state.state = "read";
        state.aliasLines = aliasLinesOf(state.path);
        const bool byName = vykel::aliasLayoutOf(&file.document()) == vykel::AliasLayout::ByResourceName;
        state.layout = byName ? "resource names" : "tokens";
        checkContent(file, findings, savingTrouble(state.path, folderWritable));
    }
    findings.finish();
}

} // namespace vykeldev
