#ifndef TESTS_TOOL_H
#define TESTS_TOOL_H

#include "support/Machine.h"
#include "support/TestFiles.h"
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>
#include <regex>

namespace vykeltest {

using Json = nlohmann::json;

inline const bool isWindows = std::string(pluginExtension) == ".dll";

inline std::string replaced(std::string text, const std::string& from, const std::string& to) {
    for (std::size_t at = text.find(from); at != std::string::npos; at = text.find(from, at + to.size()))
        text.replace(at, from.size(), to);
    return text;
}

/// A text file's content, with "\n" after each line.
inline std::string readText(const fs::path& path) {
    return replaced(readFile(path), "\r", "");
}

inline void expectPart(const std::string& text, const std::string& part) {
    EXPECT_NE(text.find(part), std::string::npos) << part << "\n--- is not in:\n" << text;
}

/// Runs vykeldev on a machine of its own.
class ToolTest : public testing::Test {
protected:
    ToolTest() {
        setEnvironment("VYKEL_ZOO_STATE", (folder / "state").string());
        breakRule("none");
        static const std::string path =
            programFolder().string() + (isWindows ? ';' : ':') + std::getenv("PATH");
        setEnvironment("PATH", path); // with the tool's folder, remedies have it by name
    }

    /// Makes zoo_plugin wrong in this way from now on.
    static void breakRule(const std::string& fault) { setEnvironment("VYKEL_ZOO_FAULT", fault); }

    /// What the tool writes to standard output, without the machine's folder in it, and "= " with its exit
    /// code.
    std::string run(const std::string& arguments, const char* program = "vykeldev") const {
        const ProgramResult result = runProgram(program, arguments);
        std::string text = replaced(result.output, "\r", "");
        for (const std::string& name : {(folder / "").string(), machine.folderName() + '\\'})
            text = replaced(replaced(text, name, ""), replaced(name, "\\", "\\\\"), "");
        static const std::regex time("20\\d\\d-\\d\\d-\\d\\dT\\d\\d:\\d\\d:\\d\\dZ");
        return std::regex_replace(text, time, "TIME") + "= " + std::to_string(result.exitCode);
    }

    /// The devices that a copy of the sample plug-in lists, changed in one step.
    void setDevices(const std::string& plugin, const std::string& devices) const {
        writeFile(folder / "next", devices);
        fs::rename(folder / "next", folder / (plugin + ".devices"));
    }

    Machine machine;
    const fs::path folder = machine.folder();
};

} // namespace vykeltest

#endif
