#ifndef TESTS_TRANSFERMACHINE_H
#define TESTS_TRANSFERMACHINE_H

#include "errors/CatchLadder.h"
#include "support/Codes.h"
#include "support/LegacyDevice.h"
#include "support/Machine.h"
#include "support/TestFiles.h"
#include "TraditionalAliasTransferManager.h"
#include <string>

namespace vykeltest {

/// A machine with a legacy file.
struct TransferMachine {
    Machine machine;
    fs::path iniFile = machine.configurationFolder() / "vykel.ini";
    fs::path temporaryFile = machine.configurationFolder() / "vykel.TMP";
};

/// An INI text as the library saves it: CRLF, and an empty line after each section.
inline std::string saved(const std::string& text) {
    std::string result;
    for (const char byte : text)
        result +=
            byte == '\n' ? "\r\n" : (byte == '[' && !result.empty() ? "\r\n" : "") + std::string(1, byte);
    return text.empty() ? "" : result + "\r\n";
}

/// Runs one transfer on the machine's legacy file.
inline vykel::StatusBlock transfer(const vykel::DeviceTable& table) {
    vykel::StatusBlock block = vykel::makeStatusBlock();
    vyerr::runGuarded(&block, {"", 0},
                      [&] { vykel::TraditionalAliasTransferManager().transferAliases(table); });
    return block;
}

} // namespace vykeltest

#endif
