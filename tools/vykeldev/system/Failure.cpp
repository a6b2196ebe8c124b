#include "system/Failure.h"

#include "system/System.h"

namespace vykeldev {

Failure systemFailure(const std::string& action, DWORD error, const std::string& remedy) {
    return {action + " failed with system error " + std::to_string(error), systemErrorText(error),
            error == ERROR_ACCESS_DENIED ? "Run the tool as administrator." : remedy};
}

} // namespace vykeldev
