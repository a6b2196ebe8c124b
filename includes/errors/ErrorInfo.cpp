#include "errors/ErrorInfo.h"

#include "errors/ErrorInfoText.h"

namespace vyerr {

namespace {

StatusTextGrowth growthOf(Status& status) noexcept {
    return {growStatusText, &status};
}

} // namespace

ErrorInfo::ErrorInfo(Status& record, std::int32_t code, const char* constantName, RaiseSite site) noexcept
    : status(record) {
    if (!setStatusCode(&status, code))
        return;
    if (status.capacity < minStatusCapacity && !status.reallocate(&status, minStatusCapacity))
        return;
    cursor = errorInfoEnd(status.json);
    addString("error_constant", constantName);
    addString("file", site.file);
    addInt("line", site.line);
    addString("component", componentName);
}

ErrorInfo& ErrorInfo::addString(const char* key, const char* value) noexcept {
    cursor = addStringField(cursor, key, value, growthOf(status));
    return *this;
}

ErrorInfo& ErrorInfo::addInt(const char* key, std::int32_t value) noexcept {
    cursor = addIntField(cursor, key, value, growthOf(status));
    return *this;
}

ErrorInfo& ErrorInfo::addUInt(const char* key, std::uint32_t value) noexcept {
    cursor = addUIntField(cursor, key, value, growthOf(status));
    return *this;
}

ErrorInfo& ErrorInfo::openObject(const char* key) noexcept {
    cursor = addObjectField(cursor, key, growthOf(status));
    if (cursor != nullptr)
        --cursor; // onto the new object's closing brace
    return *this;
}

ErrorInfo& ErrorInfo::closeObject() noexcept {
    if (cursor != nullptr)
        ++cursor;
    return *this;
}

void recordError(Status* status, std::int32_t code, const char* constantName, const char* file,
                 std::int32_t line) noexcept {
    ErrorInfo(*status, code, constantName, RaiseSite{file, line});
}

} // namespace vyerr
