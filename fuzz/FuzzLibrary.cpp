// The headers of a library file, as doctor reads them: any bytes may be read. Every name that is reported
// must be in the file, and no input may take long (scripts/fuzz sets the limit).
#include "Fuzz.h"
#include "machine/LibraryImage.h"
#include <algorithm>

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace vykeldev;
    using vykelfuzz::check;
    const std::string bytes = vykelfuzz::textOf(data, size);
    const LibraryImage image =
        readPeImage({reinterpret_cast<const char*>(data), size}); // not the copy: exact
    const bool isLibrary = image.kind == LibraryImage::Kind::Library;
    check(image.detail.empty() == isLibrary && (!isLibrary || bytes.compare(0, 2, "MZ") == 0));
    vykelfuzz::note(image.detail);
    for (const std::string& name : image.imports) {
        check(isLibrary && name.size() <= 255 && bytes.find(name) != std::string::npos);
        vykelfuzz::note(name);
    }
    const auto& missing = image.missingExports;
    for (const char* const name : entryPointNames) {
        const auto reports = std::count(missing.begin(), missing.end(), name);
        check(reports <= 1 && (!isLibrary || reports == 1 || bytes.find(name) != std::string::npos));
        vykelfuzz::note(reports == 1 ? name : "");
    }
    return 0;
}
