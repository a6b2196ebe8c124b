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

/// Finds out why the file cannot be read, if that is so.
void checkReading(const LegacyFile& file, const std::string& path, Findings& found) {
    std::string bytes;
    const DWORD error = readFile(path, bytes);
    const auto zeros = static_cast<std::size_t>(std::count(bytes.begin(), bytes.end(), '\0'));
    if (file.result == vyini::IniWideText || zeros > bytes.size() / 4) // UTF-16 may lack its byte-order mark
        return found.push_back({&finding::legacyEncoding, path, ""});
    if (file.result == 0)
        return;
    const auto add = [&](const std::string& detail, const std::string& remedy) {
        found.push_back({&finding::legacyUnreadable, path, detail, 0, remedy});
    };
    if (isFolder(path))
        return add("a folder has its name", "Move the folder away.");
    if (error == ERROR_SUCCESS)
        return add("reading it gives " + std::to_string(file.result), "");
    const bool isKnown = error == ERROR_ACCESS_DENIED || error == ERROR_SHARING_VIOLATION;
    add(systemErrorText(error), isKnown ? remedyOfOpening(error) : "");
}

/// Finds out why a transfer could not save the file, if that is so. It replaces the file, so it needs the
/// right to delete it. It writes a new file beside it, after it has removed what has the name of that.
void checkSaving(const std::string& path, bool folderWritable, Findings& found) {
    const auto add = [&](const std::string& detail, const std::string& remedy) {
        found.push_back({&finding::legacyNotWritable, path, detail, 0, remedy});
    };
    if (!openFile(path, GENERIC_READ | GENERIC_WRITE | DELETE, OPEN_EXISTING)) {
        const DWORD error = GetLastError();
        if (hasAttribute(path, FILE_ATTRIBUTE_READONLY))
            return add("it is read-only", "Run 'attrib -r \"" + path + "\"'.");
        return add("it cannot be replaced: " + systemErrorText(error), remedyOfOpening(error));
    }
    const vyini::IniString name = vyini::nameTempByExtension(path.c_str());
    if (name == nullptr)
        throw std::bad_alloc();
    const std::string temporary = name.get();
    if (isFolder(temporary))
        add("'" + temporary + "', where the new file is to be written, is a folder",
            "Move that folder away.");
    else if (hasAttribute(temporary, FILE_ATTRIBUTE_READONLY))
        add("'" + temporary + "' is in the way and read-only", "Delete that file.");
    else if (!folderWritable)
        add("no new file can be made beside it", remedyOfOpening(ERROR_ACCESS_DENIED));
}

/// Finds out what is wrong with the lines of the file, which can be read, and whether it can be saved when
/// there is something to move.
void checkContent(const LegacyFile& file, const std::string& path, bool folderWritable, Findings& found) {
    for (const LegacyLine& line : file.skippedLines)
        found.push_back({&finding::legacyLineIgnored, path, line.text, line.number});
    bool canMove = false;
    for (const LegacyEntry& entry : file.entries()) {
        canMove = canMove || entry.flaw == nullptr;
        const std::string text =
            entry.alias.value_or("(no alias)") + " = " + entry.target.value_or("(no token)");
        if (entry.flaw != nullptr)
            found.push_back({entry.flaw, path, entry.detail.empty() ? text : entry.detail + " (" + text + ")",
                             entry.line});
    }
    if (canMove)
        checkSaving(path, folderWritable, found);
}

/// Adds what was found to all findings: of each kind, and of each detail, only as much as people read.
void addSome(const Findings& found, Findings& all, const std::string& path) {
    constexpr std::size_t maxPerKind = 20;
    constexpr std::size_t maxDetailBytes = 200;
    std::map<const FindingKind*, std::size_t> counts;
    for (Finding each : found) {
        each.detail = each.detail.substr(0, maxDetailBytes);
        if (++counts[each.kind] <= maxPerKind)
            all.push_back(std::move(each));
    }
    for (const FindingKind* const kind : finding::all)
        if (const std::size_t count = counts[kind]; count > maxPerKind)
            all.push_back({kind, path, std::to_string(count - maxPerKind) + " more"});
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
    Findings found;
    checkReading(file, state.path, found);
    state.state = found.empty() ? "read" : "unreadable";
    if (found.empty()) {
        state.layout = file.layout() == vykel::AliasLayout::ByResourceName ? "resource names" : "tokens";
        state.aliasLines = aliasLinesOf(state.path);
        checkContent(file, state.path, folderWritable, found);
    }
    addSome(found, report.findings, state.path);
}

} // namespace vykeldev
