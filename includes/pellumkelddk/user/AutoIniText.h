#ifndef PELLUMKELDDK_USER_AUTOINITEXT_H
#define PELLUMKELDDK_USER_AUTOINITEXT_H

#include "ini/IniDocument.h"
#include "vytpl/NonCopyable.h"

namespace vykel {

/// Owns one document of the text file engine. One thread uses it.
class AutoIniText : private vytpl::NonCopyableT<AutoIniText> {
public:
    /// An empty document. Throws MemoryFull.
    AutoIniText();
    ~AutoIniText();

    /// The document; it stays owned here.
    vyini::IniDocument* document() const noexcept { return owned; }

private:
    vyini::IniDocument* owned;
};

} // namespace vykel

#endif
