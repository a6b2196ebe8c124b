#ifndef VYFILE_INTERNAL_FILELOCKIMPL_H
#define VYFILE_INTERNAL_FILELOCKIMPL_H

#include "vybase/owners.h"
#include "vytpl/NonCopyable.h"
#include <cstdio>
#include <windows.h>

namespace vyfile {

/// An exclusive lock on the whole of an open file, against other processes and other handles of this process.
/// It borrows the stream, which must outlive it. There is no unlock: closing the stream ends the lock. One
/// thread uses it.
class FileLockImpl : private vytpl::NonCopyableT<FileLockImpl> {
public:
    /// Does not lock yet. Throws OsFault when the system gives no event.
    explicit FileLockImpl(std::FILE* stream);

    /// Waits without limit for the lock. Throws OsFault when the system refuses it.
    void lock();

private:
    HANDLE file;
    OVERLAPPED overlapped = {};
    vybase::Handle event;
};

} // namespace vyfile

#endif
