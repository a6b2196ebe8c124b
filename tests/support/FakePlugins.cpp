#include "support/FakePlugins.h"

#include "support/Platform.h"
#include <algorithm>
#include <cstdio>

namespace vykeltest {

FakePlugins::FakePlugins() {
    char address[32];
    std::snprintf(address, sizeof address, "%p", static_cast<void*>(static_cast<FakeHost*>(this)));
    setEnvironment(environmentVariable, address);
}

std::string FakePlugins::takeLog(const std::vector<std::string>& operations) {
    std::string text;
    for (const auto& [operation, call] : log)
        if (operations.empty() ||
            std::find(operations.begin(), operations.end(), operation) != operations.end())
            text += (text.empty() ? "" : " ") + call;
    log.clear();
    return text;
}

Answer FakePlugins::call(const char* plugin, const char* operation, std::int64_t argument) {
    if (!logging && answers.empty() && actions.empty())
        return Ordinary;
    const std::string name = std::string(plugin) + "." + operation;
    const std::string text = argument < 0 ? name : name + "(" + std::to_string(argument) + ")";
    if (logging)
        log.emplace_back(operation, text);
    if (auto action = actions.extract(name))
        action.mapped()();
    auto answer = answers.find(text);
    if (answer == answers.end())
        answer = answers.find(name);
    return static_cast<Answer>(answer != answers.end() ? answer->second : Ordinary);
}

} // namespace vykeltest
