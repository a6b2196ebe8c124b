#include "machine/LibraryError.h"

#include "system/System.h"
#include "system/Text.h"

namespace vykeldev {

// Texts in the document are in the system's code page, its structure is ASCII.
LibraryError makeLibraryError(std::int32_t code, const std::string& document) {
    LibraryError error;
    error.code = code;
    error.document = Json::parse(toUtf8(toWide(document)), nullptr, false);
    if (error.document.is_discarded())
        error.document = nullptr;
    const Json system = error.document.is_object() ? error.document.value("internal_error", Json()) : Json();
    if (system.is_object() && system.value("code", Json()).is_number_integer()) {
        error.system = system["code"].get<std::uint32_t>();
        error.systemText = systemErrorText(*error.system);
    }
    return error;
}

LibraryError makeLibraryError(const vyerr::ExceptionBase& exception) {
    return makeLibraryError(exception.status()->code, exception.errorInfoJson());
}

} // namespace vykeldev
