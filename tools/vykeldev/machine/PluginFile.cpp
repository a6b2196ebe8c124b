#include "machine/PluginFile.h"

#include "machine/Findings.h"
#include "system/Files.h"
#include "system/Paths.h"
#include "system/System.h"
#include "system/Text.h"
#include <deque>
#include <set>
#include <utility>

namespace vykeldev {
namespace {

/// Follows the imports of `plugin`, their imports, and so on, without loading anything; the system's own
/// libraries are not looked into. Returns for people which libraries cannot be found or used, each once,
/// those that the plug-in itself imports first. Fills `plugin.missingImports`. `path` is the plug-in's own.
std::vector<std::string> findBadDependencies(LibraryImage& plugin, const std::string& path) {
    const std::string folder = path.substr(0, path.find_last_of("\\/") + 1);
    std::vector<std::string> bad;
    std::set<std::string> seen; // libraries may import each other
    /// Names of libraries, each with a text that says who imports it.
    std::deque<std::pair<std::string, std::string>> wanted;
    for (const std::string& name : plugin.imports)
        wanted.emplace_back(name, "");
    for (; !wanted.empty(); wanted.pop_front()) {
        const auto [name, importedBy] = std::move(wanted.front());
        if (!seen.insert(name).second)
            continue;
        const std::optional<std::string> found = findImport(name);
        if (!found) {
            const DWORD beside = GetFileAttributesW(toWide(folder + name).c_str());
            plugin.missingImports.push_back(name);
            bad.push_back(concat("not found: ", name, importedBy,
                                 beside == INVALID_FILE_ATTRIBUTES
                                     ? ""
                                     : ", which is beside the plug-in, where the system does not look"));
        }
        std::string bytes;
        if (!found || found->empty() || !isOrdinaryFile(*found) || readFile(*found, bytes) != ERROR_SUCCESS)
            continue; // what cannot be read is left to the loader
        const LibraryImage image = readPeImage(bytes);
        for (const std::string& each : image.imports)
            wanted.emplace_back(each, concat(" (imported by ", name, ")"));
        if (image.kind != LibraryImage::Kind::Library)
            bad.push_back(concat(name, importedBy, " cannot be used: '", *found, "': ", image.detail));
    }
    return bad;
}

/// Looks at the file without loading it or what it imports. Returns why a load will fail, or nothing.
std::optional<Obstacle> lookAtHeaders(const std::string& path, std::optional<LibraryImage>& image) {
    std::string bytes;
    if (path.empty())
        return Obstacle{&finding::pathEmpty, Step::Path, "the path is empty"};
    if (isFolder(path))
        return Obstacle{&finding::pathEmpty, Step::Path, "this is a folder"};
    if (!isAbsolutePath(path))
        return std::nullopt; // only the loader knows which file it is
    if (!isOrdinaryFile(path))
        return Obstacle{&finding::fileNotALibrary, Step::File, "this is a device or a pipe"};
    if (const DWORD error = readFile(path, bytes); error != ERROR_SUCCESS) {
        const bool missing = error == ERROR_FILE_NOT_FOUND || error == ERROR_PATH_NOT_FOUND;
        return Obstacle{missing ? &finding::fileMissing : &finding::fileUnreadable, Step::File,
                        systemErrorText(error) + pathOddity(path),
                        missing && !pathOddity(path).empty() ? &finding::pathRelative : nullptr};
    }
    if (!librariesArePe)
        return std::nullopt; // the loader is the only judge
    image = readPeImage(bytes);
    if (image->kind == LibraryImage::Kind::NotALibrary)
        return Obstacle{&finding::fileNotALibrary, Step::File, image->detail};
    if (image->kind == LibraryImage::Kind::OtherMachine)
        return Obstacle{&finding::architectureWrong, Step::Architecture, image->detail};
    return std::nullopt;
}

} // namespace

Json factsOf(const std::string& path) {
    WIN32_FILE_ATTRIBUTE_DATA data = {};
    if (!isAbsolutePath(path) || !isOrdinaryFile(path) ||
        !GetFileAttributesExW(toWide(path).c_str(), GetFileExInfoStandard, &data))
        return {{"version", nullptr}, {"maker", nullptr}, {"written", nullptr}};
    const auto [version, maker] = fileVersion(path);
    const FILETIME& time = data.ftLastWriteTime; // tenths of microseconds since 1601
    const auto seconds = ((std::uint64_t{time.dwHighDateTime} << 32) + time.dwLowDateTime) / 10'000'000;
    return {{"version", textOrNull(version)},
            {"maker", textOrNull(maker)},
            {"written", utcText(static_cast<std::time_t>(seconds - 11'644'473'600))}};
}

std::string pathOddity(const std::string& path) {
    if (path.find('"') != std::string::npos)
        return "; the quotes are part of the value: remove them";
    if (path.front() == ' ' || path.back() == ' ')
        return "; the value begins or ends with a blank: remove it";
    const std::size_t percent = path.find('%');
    if (percent != std::string::npos && path.find('%', percent + 1) != std::string::npos)
        return "; the variable between the percent signs is not replaced";
    return "";
}

std::optional<Obstacle> lookAtFile(const std::string& path, std::optional<LibraryImage>& image) {
    if (std::optional<Obstacle> obstacle = lookAtHeaders(path, image); obstacle || !image)
        return obstacle;
    const auto bad = findBadDependencies(*image, path);
    if (bad.empty())
        return std::nullopt;
    return Obstacle{&finding::dependencyMissing, Step::Dependency, joined(bad, "; ")};
}

std::string describeBadDependencies(const std::string& path) {
    std::optional<LibraryImage> image;
    const std::optional<Obstacle> obstacle = lookAtFile(path, image);
    return obstacle && image ? obstacle->detail : ""; // what cannot be read is left to the loader
}

std::string describeFlaw(const std::string& path) {
    std::optional<LibraryImage> image;
    if (const std::optional<Obstacle> obstacle = lookAtHeaders(path, image))
        return obstacle->detail;
    if (!image || image->missingExports.empty())
        return "";
    return "the library does not export " + joined(image->missingExports, ", ");
}

} // namespace vykeldev
