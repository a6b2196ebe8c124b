#include "support/StatusText.h"

#include "support/DisplayText.h"
#include <algorithm>
#include <cstdint>

namespace vykeldev {
namespace {

/// A text of a fixed-size field, which a faulty writer may have left without its end.
template <std::size_t size>
std::string fieldText(const char (&field)[size]) {
    return printable(std::string(field, std::find(field, field + size, '\0')));
}

struct SampleError {
    std::int32_t code;
    const char* remedy;
};

// The codes are in the plug-in's README.md.
constexpr SampleError sampleErrors[] = {
    {-64101,
     "Make this file in the folder of the plug-in, let this user read it, and close the program that holds "
     "it open."},
    {-64102, "Correct this line of the file."},
    {-64103,
     "Let this user write in the folder of the plug-in and change its files there; none may be read-only."},
    {-64104, "Save the file as UTF-8: it is in UTF-16, which Notepad calls Unicode."},
};

} // namespace

std::string placeIn(const vykel::StatusBlock& status) {
    const std::string file = fieldText(status.file);
    return file.empty() || status.line == 0 ? file : file + ":" + std::to_string(status.line);
}

std::string sampleRemedy(const vykel::StatusBlock& status) {
    if (fieldText(status.component) == "simulated")
        for (const SampleError& error : sampleErrors)
            if (error.code == status.code)
                return error.remedy;
    return "";
}

std::string originText(const vykel::StatusBlock& status) {
    const std::string place = placeIn(status);
    const std::string remedy = sampleRemedy(status);
    return (place.empty() ? "" : "; the plug-in names " + place) + (remedy.empty() ? "" : ". " + remedy);
}

} // namespace vykeldev
