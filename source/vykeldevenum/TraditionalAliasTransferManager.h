#ifndef VYKELDEVENUM_TRADITIONALALIASTRANSFERMANAGER_H
#define VYKELDEVENUM_TRADITIONALALIASTRANSFERMANAGER_H

#include "AliasRecords.h"
#include "DeviceLists.h"
#include "ini/IniDocument.h"
#include <cstdint>
#include <list>
#include <string>

namespace vykel {

/// Moves the aliases that an older driver generation kept in the legacy file onto the devices that the
/// plug-ins report, and removes each moved entry from the file, so that every alias is handed over once. From
/// run to run it keeps only its paths. One thread uses it.
class TraditionalAliasTransferManager {
public:
    /// Throws ResourceNotFound or MemoryFull when the configuration folder cannot be found.
    TraditionalAliasTransferManager();

    /// One whole run. It holds the lock on the lock file from before the load until after the save, and waits
    /// without limit for other runs. A file that is missing or cannot be read ends the run without an error.
    /// Throws ConfigurationFault (no lock file, a malformed entry, a save that fails), OsFault, MemoryFull,
    /// the negative code of a device that refuses its alias, or what a plug-in threw. Then the file keeps its
    /// bytes, and the next run finishes what this one began.
    void transferAliases(const DeviceTable& devicesPerList);

    /// The path of the legacy file, in UTF-8.
    const std::string& iniPath() const noexcept { return iniFilePath; }

    /// The transfer itself, on a document in memory, without locks and files. Returns whether the document
    /// must be saved. Throws ConfigurationFault (a malformed entry), MemoryFull, a device's negative code, or
    /// what a plug-in threw.
    static bool transfer(vyini::IniDocument* document, const DeviceTable& devicesPerList);

private:
    using AliasRecords = std::list<TraditionalAliasRecord>; ///< in the order of the file

    /// The passes of transfer, one for each layout. Each returns whether it changed the document.
    static bool transferByResourceName(vyini::IniDocument* document, const DeviceTable& devicesPerList);
    static bool transferByPersistentToken(vyini::IniDocument* document, const DeviceTable& devicesPerList,
                                          std::uint32_t tokenFormat);

    /// Moves the records of the layouts by token out of the document, up to the first index that is missing.
    static void readAliasRecords(vyini::IniDocument* document, AliasRecords& records);

    /// Writes records as new sections at the end of the document, numbered from 0.
    static void writeAliasRecords(vyini::IniDocument* document, const AliasRecords& records);

    std::string iniFilePath;
    std::string lockFilePath;
};

} // namespace vykel

#endif
