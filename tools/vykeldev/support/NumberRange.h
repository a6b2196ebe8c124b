#ifndef VYKELDEV_SUPPORT_NUMBERRANGE_H
#define VYKELDEV_SUPPORT_NUMBERRANGE_H

#include <CLI/CLI.hpp>
#include <functional>
#include <limits>
#include <string>

namespace vykeldev {

/// A check of an option's text, for numbers from `least` to `most`. Refuses all else, "nan" too, and says
/// what is `wanted`.
inline std::function<std::string(const std::string&)>
numberFrom(double least, const char* wanted, double most = std::numeric_limits<double>::infinity()) {
    return [=](const std::string& text) {
        double value = 0;
        const bool good = CLI::detail::lexical_cast(text, value) && value >= least && value <= most;
        return good ? std::string() : std::string(wanted) + " expected, not '" + text + "'";
    };
}

} // namespace vykeldev

#endif
