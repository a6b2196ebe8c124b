#include "errors/Exception.h"

#include "errors/ErrorInfo.h"

namespace vyerr {

ExceptionBase::ExceptionBase() noexcept {
    initStatus(&record);
}

ExceptionBase::ExceptionBase(const ExceptionBase& source) noexcept {
    initStatus(&record);
    mergeStatus(&record, &source.record);
}

ExceptionBase::~ExceptionBase() {
    releaseStatus(&record);
}

const char* ExceptionBase::errorInfoJson() const noexcept {
    return record.json != nullptr ? record.json : "";
}

const char* Exception::what() const noexcept {
    return ExceptionBase::errorInfoJson();
}

const char* Exception::errorInfoJson() const noexcept {
    return ExceptionBase::errorInfoJson();
}

void raiseError(std::int32_t code, const char* constantName, RaiseSite site) {
    const Exception exception;
    recordError(exception.status(), code, constantName, site.file, site.line);
    throw exception; // the thrown copy takes over the text
}

void raiseError(vykel::StatusCode code, const char* constantName, RaiseSite site) {
    raiseError(vykel::toInteger(code), constantName, site);
}

void throwFailure(Status* status) {
    const Exception exception;
    mergeStatus(exception.status(), status);
    throw exception;
}

void throwIfFailed(Status* status) {
    if (status->code < 0)
        throwFailure(status);
}

void throwIfFailed(const StatusBlock* block) {
    if (block->code >= 0)
        return;
    const Exception exception;
    setStatusCode(exception.status(), block->code);
    throw exception;
}

} // namespace vyerr
