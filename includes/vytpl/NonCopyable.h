#ifndef VYTPL_NONCOPYABLE_H
#define VYTPL_NONCOPYABLE_H

namespace vytpl {

/// A private base that forbids copying and assigning. The parameter only tells apart the bases of classes
/// that hold one another, so that none of them grows.
template <class Derived>
class NonCopyableT {
protected:
    NonCopyableT() = default;
    ~NonCopyableT() = default;

public:
    NonCopyableT(const NonCopyableT&) = delete;
    NonCopyableT& operator=(const NonCopyableT&) = delete;
};

} // namespace vytpl

#endif
