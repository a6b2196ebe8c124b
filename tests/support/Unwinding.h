#ifndef TESTS_UNWINDING_H
#define TESTS_UNWINDING_H

#include <memory>

namespace vykeltest {

/// Runs `body` while an exception of the caller is propagating, as a client's destructor may: whatever
/// reports a failure only when no exception is in flight then reports nothing.
template <class Body>
void whileUnwinding(Body body) {
    try {
        const std::shared_ptr<void> atEnd(nullptr, [&](void*) { body(); });
        throw 0;
    } catch (int) {
    }
}

} // namespace vykeltest

#endif
