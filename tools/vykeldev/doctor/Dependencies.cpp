#include "doctor/Dependencies.h"

#include "platform/DoctorPlatform.h"
#include "support/Files.h"
#include <deque>
#include <set>
#include <utility>

namespace vykeldev::doctor {
namespace {

/// A library whose own dependencies are still to be looked for.
struct Asker {
    std::string name;
    std::string folder;
    LibraryImage image;
};

/// Follows one library that was found: notes why it is unfit, or that its own dependencies are to be looked
/// for. What cannot be read is left to the loader.
void follow(BadDependency dependency, const std::string& path, std::deque<Asker>& askers,
            std::vector<BadDependency>& bad) {
    std::string bytes;
    if (!isOrdinaryFile(path) || readFile(path, bytes) != ERROR_SUCCESS)
        return;
    LibraryImage image = readNativeImage(bytes);
    if (image.kind == LibraryImage::Kind::Library) {
        askers.push_back({dependency.name, folderOf(path), std::move(image)});
        return;
    }
    dependency.unfit = "'" + path + "': " + image.detail;
    bad.push_back(std::move(dependency));
}

} // namespace

std::vector<BadDependency> findBadDependencies(const LibraryImage& plugin, const std::string& folder) {
    std::vector<BadDependency> bad;
    std::set<std::string> seen;
    std::deque<Asker> askers{{"", folder, plugin}};
    for (; !askers.empty(); askers.pop_front()) {
        const Asker asker = std::move(askers.front());
        for (const std::string& name : asker.image.imports) {
            if (!seen.insert(name).second)
                continue;
            const auto path = findImport(name, asker.image, asker.folder);
            if (!path)
                bad.push_back({name, asker.name, ""});
            else if (!path->empty())
                follow({name, asker.name, ""}, *path, askers, bad);
        }
    }
    return bad;
}

} // namespace vykeldev::doctor
