#include "machine/Dependencies.h"

#include "system/Files.h"
#include "system/Loader.h"
#include "system/System.h"
#include "system/Text.h"
#include <deque>
#include <set>
#include <utility>

namespace vykeldev::doctor {

std::vector<std::string> findBadDependencies(LibraryImage& plugin, const std::string& path) {
    const std::string folder = path.substr(0, path.find_last_of("\\/") + 1);
    std::vector<std::string> bad;
    std::set<std::string> seen; // libraries may import each other
    std::deque<std::pair<std::string, LibraryImage>> importers{{"", plugin}};
    for (; !importers.empty(); importers.pop_front()) {
        const auto [importer, importerImage] = std::move(importers.front());
        const std::string importedBy = importer.empty() ? "" : concat(" (imported by ", importer, ")");
        for (const std::string& name : importerImage.imports) {
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
            if (!found || found->empty() || !isOrdinaryFile(*found) ||
                readFile(*found, bytes) != ERROR_SUCCESS)
                continue; // what cannot be read is left to the loader
            const std::optional<LibraryImage> image = readNativeImage(bytes);
            if (image && image->kind == LibraryImage::Kind::Library)
                importers.emplace_back(name, *image);
            else if (image)
                bad.push_back(concat(name, importedBy, " cannot be used: '", *found, "': ", image->detail));
        }
    }
    return bad;
}

std::string describeBadDependencies(const std::string& path) {
    std::string bytes;
    if (readFile(path, bytes) != ERROR_SUCCESS)
        return "";
    std::optional<LibraryImage> image = readNativeImage(bytes);
    if (!image)
        return "";
    if (image->kind != LibraryImage::Kind::Library)
        return image->detail;
    return joined(findBadDependencies(*image, path), "; ");
}

} // namespace vykeldev::doctor
