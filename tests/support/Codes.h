#ifndef TESTS_CODES_H
#define TESTS_CODES_H

#include "vykel/StatusCodes.h"

/// The library's codes as the numbers that its interfaces carry.
namespace vykeltest {

using vykel::StatusCode;
using vykel::toInteger;

constexpr std::int32_t success = toInteger(StatusCode::Success);
constexpr std::int32_t configurationFault = toInteger(StatusCode::ConfigurationFault);
constexpr std::int32_t memoryFull = toInteger(StatusCode::MemoryFull);
constexpr std::int32_t generalFault = toInteger(StatusCode::GeneralFault);
constexpr std::int32_t badCast = toInteger(StatusCode::BadCast);
constexpr std::int32_t invalidParameter = toInteger(StatusCode::InvalidParameter);
constexpr std::int32_t resourceNotFound = toInteger(StatusCode::ResourceNotFound);
constexpr std::int32_t osFault = toInteger(StatusCode::OsFault);
constexpr std::int32_t pluginNotInitialized = toInteger(StatusCode::PluginNotInitialized);
constexpr std::int32_t versionMismatch = toInteger(StatusCode::VersionMismatch);

} // namespace vykeltest

#endif
