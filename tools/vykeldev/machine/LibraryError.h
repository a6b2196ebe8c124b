#ifndef VYKELDEV_MACHINE_LIBRARYERROR_H
#define VYKELDEV_MACHINE_LIBRARYERROR_H

#include "errors/Exception.h"
#include "output/Json.h"
#include <cstdint>
#include <optional>
#include <string>

namespace vykeldev {

/// An error as the library reports it.
struct LibraryError {
    std::int32_t code = 0;
    Json document = {};                       ///< null when there is none
    std::optional<std::uint32_t> system = {}; ///< the system's code in it
    std::string systemText = {};              ///< UTF-8; empty when there is none

    static constexpr std::tuple members{member("code", &LibraryError::code),
                                        member("document", &LibraryError::document)};
};

/// Its codes and the system's text, for people.
std::string describe(const LibraryError& error);

/// Reads a library's error and its JSON text.
LibraryError makeLibraryError(std::int32_t code, const std::string& document);
LibraryError makeLibraryError(const vyerr::ExceptionBase& exception);

} // namespace vykeldev

#endif
