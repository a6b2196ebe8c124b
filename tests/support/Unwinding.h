#ifndef TESTS_UNWINDING_H
#define TESTS_UNWINDING_H

namespace vykeltest {

/// Runs `body` while an exception of the caller is propagating, as a client's destructor may: whatever
/// reports a failure only when no exception is in flight then reports nothing.
template <class Body>
void whileUnwinding(Body body) {
    struct AtEnd {
        Body& run;
        ~AtEnd() { run(); }
    };
    try {
        const AtEnd atEnd{body};
        throw 0;
    } catch (int) {
    }
}

} // namespace vykeltest

#endif
