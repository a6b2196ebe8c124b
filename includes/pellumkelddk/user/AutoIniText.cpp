#include "pellumkelddk/user/AutoIniText.h"

#include "errors/Exception.h"

namespace vykel {

namespace {

constexpr vyerr::RaiseSite createSite{__FILE__, 18};

} // namespace

AutoIniText::AutoIniText() : owned(vyini::createIniDocument()) {
    if (owned == nullptr)
        vyerr::raiseError(StatusCode::MemoryFull, vyerr::constant::deviceEnumeration, createSite);
}

AutoIniText::~AutoIniText() {
    vyini::freeIniDocument(owned);
}

} // namespace vykel
