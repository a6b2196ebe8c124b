#include "machine/LibraryError.h"

#include "system/System.h"
#include "system/Text.h"

namespace vykeldev {

std::string describe(const LibraryError& error) {
    const std::string system = error.system ? concat(", system error ", *error.system) : "";
    return concat("code ", error.code, system, error.systemText.empty() ? "" : ": ", error.systemText);
}

// Texts in the document are in the system's code page, its structure is ASCII.
LibraryError makeLibraryError(std::int32_t code, const std::string& document) {
    LibraryError error{code, Json::parse(toUtf8(toWide(document)), nullptr, false)};
    if (error.document.is_discarded())
        error.document = nullptr;
    const Json::json_pointer systemCode("/internal_error/code");
    if (error.document.contains(systemCode) && error.document[systemCode].is_number_integer()) {
        error.system = error.document[systemCode].get<std::uint32_t>();
        error.systemText = systemErrorText(*error.system);
    }
    return error;
}

LibraryError makeLibraryError(const vyerr::ExceptionBase& exception) {
    return makeLibraryError(exception.status()->code, exception.errorInfoJson());
}

} // namespace vykeldev
