#ifndef VYKELDEV_OUTPUT_NUMBERRANGE_H
#define VYKELDEV_OUTPUT_NUMBERRANGE_H

#include <CLI/CLI.hpp>
#include <functional>
#include <string>

namespace vykeldev {

/// A check of an option's text: accepts numbers from `min` to `max` and nothing else, not even "nan". The
/// error says what is `expected`.
inline std::function<std::string(const std::string&)> inRange(double min, double max, const char* expected) {
    return [=](const std::string& text) {
        double value = 0;
        const bool good = CLI::detail::lexical_cast(text, value) && value >= min && value <= max;
        return good ? std::string() : std::string(expected) + " expected, not '" + text + "'";
    };
}

} // namespace vykeldev

#endif
