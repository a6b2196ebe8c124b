#include "errors/Status.h"

#include "errors/ErrorInfoText.h"
#include <cstdlib>
#include <cstring>

namespace vyerr {

namespace {

constexpr std::uint32_t maxRequest = 0x7FFFFFFF;
constexpr std::uint32_t maxGrowingCapacity = 0x40000000; // twice as much is one more than maxRequest
constexpr std::uint32_t firstCapacity = 512;

std::uint32_t roundedCapacity(std::uint32_t wanted) noexcept {
    std::uint32_t capacity = firstCapacity;
    while (capacity < wanted)
        capacity *= 2;
    return capacity;
}

void moveText(Status* into, Status* from) noexcept {
    into->reallocate(into, 0);
    into->capacity = from->capacity;
    into->json = from->json;
    from->capacity = 0;
    from->json = nullptr;
}

void copyText(Status* into, const Status* from) noexcept {
    const char* text = from->json != nullptr ? from->json : "{}";
    const std::size_t length = std::strlen(text);
    if (length > maxRequest - 2)
        return;
    if (into->reallocate(into, static_cast<std::uint32_t>(length + 2)))
        layStatusText(into->json, into->capacity, text);
}

} // namespace

bool defaultStatusReallocate(Status* status, std::uint32_t wantedCapacity) noexcept {
    if (wantedCapacity == 0) {
        std::free(status->json);
        status->capacity = 0;
        status->json = nullptr;
        return true;
    }
    if (wantedCapacity <= status->capacity)
        return true;
    if (wantedCapacity > maxRequest)
        return false;
    const std::uint32_t capacity = roundedCapacity(wantedCapacity);
    auto* const buffer = static_cast<char*>(std::malloc(capacity));
    if (buffer == nullptr)
        return false;
    layStatusText(buffer, capacity, status->json != nullptr ? status->json : "{}");
    std::free(status->json);
    status->capacity = capacity;
    status->json = buffer;
    return true;
}

Status* initStatus(Status* status) noexcept {
    *status = Status{0, 0, defaultStatusReallocate, nullptr};
    return status;
}

void releaseStatus(Status* status) noexcept {
    status->code = 0;
    status->reallocate(status, 0);
}

bool setStatusCode(Status* status, std::int32_t code) noexcept {
    if (!replacesCode(status->code, code))
        return false;
    status->code = code;
    if (status->json == nullptr)
        return true;
    if (status->capacity < minStatusCapacity && !status->reallocate(status, minStatusCapacity))
        return true;
    layStatusText(status->json, status->capacity, "{}");
    return true;
}

bool mergeStatus(Status* into, Status* from) noexcept {
    if (!setStatusCode(into, from->code))
        return false;
    if (into->reallocate == from->reallocate)
        moveText(into, from);
    else
        copyText(into, from);
    return true;
}

char* growStatusText(char* cursor, Status* status) noexcept {
    const std::uint32_t capacity = status->capacity;
    if (capacity < 2 || capacity > maxGrowingCapacity)
        return nullptr;
    const std::ptrdiff_t offset = cursor - status->json;
    const std::uint32_t wanted = 2 * capacity - 2; // `reallocate` rounds it up to the double
    if (capacity < wanted && !status->reallocate(status, wanted))
        return nullptr;
    if (errorInfoEnd(status->json) == nullptr)
        return nullptr;
    return status->json + offset;
}

} // namespace vyerr
