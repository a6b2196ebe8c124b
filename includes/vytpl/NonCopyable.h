#ifndef VYTPL_NONCOPYABLE_H
#define VYTPL_NONCOPYABLE_H

namespace vytpl {

/// A private base that forbids copying and assigning. Pass the class itself, so that the empty base costs no
/// space: two empty bases of one type in an object would make it larger. A class that is part of no other
/// such class may pass void.
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
