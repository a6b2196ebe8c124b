#ifndef VYKELDEVENUM_TRADITIONALALIASTRANSFERMANAGER_H
#define VYKELDEVENUM_TRADITIONALALIASTRANSFERMANAGER_H

#include "DeviceTable.h"
#include "ini/IniDocument.h"
#include <cstdint>
#include <string>
#include <vector>

namespace vykel {

/// One alias of the token layout.
struct TraditionalAliasRecord {
    std::string alias;
    std::string persistentToken;
    bool local = false;
};

/// Told of each legacy entry that a pass hands over or drops, before it goes. For tools that show what a
/// transfer would do; the library itself has none.
class AliasTransferObserver {
public:
    /// `given` tells whether the device receives the alias; otherwise it has one already.
    virtual void onConsumed(const std::string& alias, std::uint32_t deviceNumber, bool given) = 0;

protected:
    ~AliasTransferObserver() = default;
};

/// The layouts of the legacy file. ByTokenFormat1 and 2 differ only in the format of the persistent tokens.
enum class AliasLayout { ByResourceName, ByTokenFormat1, ByTokenFormat2 };

/// Moves the aliases that an older driver generation kept in the configuration file onto the devices that the
/// plug-ins report, and removes each moved entry from the file, so that every alias is handed over once.
/// Keeps no state between runs but its paths.
class TraditionalAliasTransferManager {
public:
    /// Throws ResourceNotFound or MemoryFull when the configuration folder cannot be found.
    TraditionalAliasTransferManager();

    /// One whole run, under the lock on the lock file from before the load until after the save. A file that
    /// is missing or cannot be read ends the run without an error. Waits without limit for other runs. Throws
    /// ConfigurationFault (no lock file, a malformed entry, a save that fails: the file then keeps its old
    /// bytes), OsFault, MemoryFull, the negative code that a device leaves when given an alias, or what a
    /// plug-in threw; nothing is saved then, and the next run finishes what this one began.
    void transferAliases(const DeviceTable& devicesPerList);

    const std::string& iniPath() const noexcept { return iniFilePath; }

    // The passes below work on a document in memory. They throw as transferAliases does.

    /// The layout that a document is written in.
    static AliasLayout layoutOf(vyini::IniDocument* document);

    /// Runs the pass of the document's layout. True when the document changed.
    static bool transfer(vyini::IniDocument* document, const DeviceTable& devicesPerList,
                         AliasTransferObserver* observer = nullptr);

    /// The pass for the layout with one section of alias = resource name.
    static bool transferByResourceName(vyini::IniDocument* document, const DeviceTable& devicesPerList,
                                       AliasTransferObserver* observer = nullptr);

    /// The pass for the layout with one section per alias; `tokenFormat` is 1 or 2.
    static bool transferByPersistentToken(vyini::IniDocument* document, const DeviceTable& devicesPerList,
                                          std::uint32_t tokenFormat,
                                          AliasTransferObserver* observer = nullptr);

    /// Moves the sections Alias0, Alias1, ... up to the first gap out of the document into `records`, which
    /// is emptied first.
    static void readAliasRecords(vyini::IniDocument* document, std::vector<TraditionalAliasRecord>& records);

    /// Writes records back as new sections Alias0, Alias1, ... at the end of the document.
    static void writeAliasRecords(vyini::IniDocument* document,
                                  const std::vector<TraditionalAliasRecord>& records);

private:
    std::string iniFilePath;
    std::string lockFilePath;
};

} // namespace vykel

#endif
