#ifndef VYKELDEVENUM_PLUGINCALL_H
#define VYKELDEVENUM_PLUGINCALL_H

#include "errors/Exception.h"
#include <exception>
#include <new>
#include <stdexcept>
#include <system_error>
#include <typeinfo>
#include <utility>
#if defined(__GLIBCXX__)
#include <cxxabi.h>
#endif

namespace vykel {

namespace detail {

/// Sets what std::uncaught_exceptions() returns on this thread.
inline void setUncaughtExceptions(int count) noexcept {
#if defined(__GLIBCXX__)
    struct EhGlobals { // fixed by the Itanium C++ ABI
        void* caught;
        unsigned int uncaught;
    };
    reinterpret_cast<EhGlobals*>(abi::__cxa_get_globals())->uncaught = static_cast<unsigned int>(count);
#else
    static_cast<void>(count); // one runtime serves every module
#endif
}

} // namespace detail

/// Calls into a plug-in: runs `call` and returns what it returns. Put only the call of the plug-in in it. A
/// plug-in must let no exception out. When one gets out, this throws an exception of this module and of the
/// same type instead: a vyerr::ExceptionBase keeps its code and text, and an unknown type becomes
/// std::runtime_error. The original must not go further, because a plug-in may carry its own C++ runtime:
/// - that runtime counts the throw and ours the catch, so std::uncaught_exceptions() would be wrong on this
///   thread ever after;
/// - the thrown object's code is in the plug-in, which unwinding may unload before the handler ends.
/// A call without an exception costs only one query of that count; a loop of calls may be one `call`.
template <class Call>
decltype(auto) callPlugin(Call&& call) {
    const int before = std::uncaught_exceptions();
    try {
        return std::forward<Call>(call)();
    } catch (const vyerr::ExceptionBase& exception) {
        detail::setUncaughtExceptions(before);
        vyerr::throwFailure(exception.status()); // copies the text when another module owns it
    } catch (const std::bad_alloc&) {
        detail::setUncaughtExceptions(before);
        throw std::bad_alloc();
    } catch (const std::invalid_argument& exception) {
        detail::setUncaughtExceptions(before);
        throw std::invalid_argument(exception.what());
    } catch (const std::bad_cast&) {
        detail::setUncaughtExceptions(before);
        throw std::bad_cast();
    } catch (const std::system_error& exception) {
        detail::setUncaughtExceptions(before);
        throw std::system_error(exception.code().value(), std::generic_category(), exception.what());
    } catch (...) {
        detail::setUncaughtExceptions(before);
        throw std::runtime_error("the plug-in raised an exception");
    }
}

/// The same, but it drops the exception: for calls whose failure nobody can act on.
template <class Call>
void callPluginQuietly(Call&& call) noexcept {
    const int before = std::uncaught_exceptions();
    try {
        std::forward<Call>(call)();
    } catch (...) {
        detail::setUncaughtExceptions(before);
    }
}

} // namespace vykel

#endif
