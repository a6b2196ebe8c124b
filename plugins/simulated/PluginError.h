#ifndef SIMULATED_PLUGINERROR_H
#define SIMULATED_PLUGINERROR_H

#include "File.h"
#include <cstddef>
#include <cstdint>
#include <stdexcept>
#include <string>
#include <utility>

namespace simulated {

/// This plug-in's own status codes. As a warning, the same number is positive.
enum class Code : std::int32_t {
    FileMissing = -64101,   ///< the devices file cannot be opened or read
    FileMalformed = -64102, ///< the devices file has a bad line; as a warning: the numbers file has one
    NotKept = -64103,       ///< the numbers file cannot be read or written
    FileNotUtf8 = -64104,   ///< the devices file is in UTF-16 or UTF-32
    PathUnknown = -64105    ///< the system does not say where this library is
};

/// What is wrong, and with which file.
class PluginError : public std::runtime_error {
public:
    PluginError(Code errorCode, Path errorFile, std::size_t errorLine, const std::string& reason)
        : std::runtime_error(reason), code(errorCode), file(std::move(errorFile)), line(errorLine) {}

    const Code code;
    const Path file;
    const std::size_t line; ///< the bad line of the file, from 1; 0: none
};

} // namespace simulated

#endif
