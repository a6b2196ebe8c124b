#ifndef TESTS_INITESTKIT_H
#define TESTS_INITESTKIT_H

#include "ini/IniReader.h"
#include "support/IniDescription.h"
#include "support/Machine.h"
#include "support/TestFiles.h"
#include <string>

namespace vykeltest {

using namespace std::string_literals;
using namespace vyini;

/// A folder with the file that a test reads and writes.
class IniFolder {
public:
    int load(IniDocument& document, const std::string& text) {
        fs::remove(file()); // a new file is not flushed to the disk, a truncated one is
        writeFile(file(), text);
        return loadIniFile(&document, file().string().c_str());
    }
    fs::path file() const { return path("vykel.ini"); }
    fs::path path(const char* name) const { return machine.folder() / name; }

private:
    Machine machine;
};

} // namespace vykeltest

#endif
