#include "errors/CatchLadder.h"

#include "errors/Exception.h"
#include <new>
#include <stdexcept>
#include <system_error>
#include <typeinfo>

namespace vyerr {

void translateCurrentException(StatusBlock* block, RaiseSite boundary) noexcept {
    const auto store = [=](vykel::StatusCode code) noexcept { storeError(block, code, boundary); };
    try {
        throw; // cppcheck-suppress rethrowNoCurrentException ; the caller is a catch clause
    } catch (const ExceptionBase& exception) {
        statusToBlock(exception.status(), block);
        store(vykel::StatusCode::GeneralFault); // takes effect only when the exception carried no error
    } catch (const std::bad_alloc&) {
        store(vykel::StatusCode::MemoryFull);
    } catch (const std::invalid_argument&) {
        store(vykel::StatusCode::InvalidParameter);
    } catch (const std::bad_cast&) {
        store(vykel::StatusCode::BadCast);
    } catch (const std::system_error&) {
        store(vykel::StatusCode::OsFault);
    } catch (...) { // also every other std::exception
        store(vykel::StatusCode::GeneralFault);
    }
}

} // namespace vyerr
