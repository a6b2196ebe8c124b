#include "doctor/Dependencies.h"

#include "platform/Loader.h"
#include "platform/System.h"
#include "support/Files.h"
#include <deque>
#include <set>
#include <utility>

namespace vykeldev::doctor {

std::vector<BadDependency> findBadDependencies(const LibraryImage& plugin) {
    std::vector<BadDependency> bad;
    std::set<std::string> seen; // libraries may import each other
    std::deque<std::pair<std::string, LibraryImage>> importers{{"", plugin}};
    for (; !importers.empty(); importers.pop_front()) {
        const auto [importer, importerImage] = std::move(importers.front());
        for (const std::string& name : importerImage.imports) {
            if (!seen.insert(name).second)
                continue;
            const std::optional<std::string> path = findImport(name);
            if (!path)
                bad.push_back({name, importer, ""});
            std::string bytes;
            if (!path || path->empty() || !isOrdinaryFile(*path) || readFile(*path, bytes) != ERROR_SUCCESS)
                continue; // what cannot be read is left to the loader
            const std::optional<LibraryImage> image = readNativeImage(bytes);
            if (image && image->kind == LibraryImage::Kind::Library)
                importers.emplace_back(name, *image);
            else if (image)
                bad.push_back({name, importer, "'" + *path + "': " + image->detail});
        }
    }
    return bad;
}

} // namespace vykeldev::doctor
