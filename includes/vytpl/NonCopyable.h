#ifndef VYTPL_NONCOPYABLE_H
#define VYTPL_NONCOPYABLE_H

namespace vytpl {

/// A private base that forbids copying and assigning. The parameter gives a class a base type of its own: two
/// empty bases of one type within an object would make it larger. A class that is part of no other such class
/// may pass void.
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
