#include "doctor/JsonReport.h"

#include "machine/Findings.h"
#include <algorithm>

namespace vykeldev {
// The functions to_json make a document of any member or vector of these types.

void to_json(Json& json, const LibraryImage& image) {
    static constexpr const char* kinds[] = {"no library", "other machine", "library"};
    json = {{"kind", kinds[static_cast<std::size_t>(image.kind)]},
            {"missingExports", image.missingExports},
            {"imports", image.imports},
            {"missingImports", image.missingImports}};
}

void to_json(Json& json, const Finding& finding) {
    json = {{"id", finding.kind->id},      {"severity", nameOf(finding.kind->severity)},
            {"subject", finding.subject},  {"line", finding.line > 0 ? Json(finding.line) : Json()},
            {"detail", finding.detail},    {"meaning", finding.kind->meaning},
            {"remedy", finding.whatToDo()}};
}

} // namespace vykeldev

namespace vykeldev::doctor {

void to_json(Json& json, const PluginAccount& plugin) {
    const std::optional<Obstacle>& obstacle = plugin.obstacle;
    const bool isRefusal = obstacle && obstacle->kind == &finding::pluginRefused;
    const char* const failure = isRefusal ? "refused" : "failed";
    Json numbers = Json::array();
    for (const Json& device : plugin.devices)
        numbers.push_back(device["number"]);
    json = {{"name", plugin.name},
            {"path", plugin.path},
            {"outcome", obstacle ? failure : "loaded"},
            {"failedStep", obstacle ? Json(nameOf(obstacle->step)) : Json()},
            {"detail", obstacle ? obstacle->detail : ""},
            {"system", nullptr},
            {"error", plugin.error},
            {"milliseconds", plugin.milliseconds},
            {"devices", numbers.size()},
            {"deviceNumbers", numbers},
            {"image", plugin.image}};
    json.update(factsOf(plugin.path.value_or("")));
    if (plugin.error && plugin.error->system)
        json["system"] = {{"code", *plugin.error->system}, {"text", plugin.error->systemText}};
    json["deviceList"] = plugin.devices;
}

Json makeReport(const Json& versions, const std::vector<PluginAccount>& plugins, const FolderReport& folder) {
    static constexpr const char* states[] = {"healthy", "warnings", "broken"};
    Severity worst = Severity::Info;
    for (const Finding& finding : folder.findings)
        worst = std::max(worst, finding.kind->severity);
    Json report = {{"state", states[static_cast<std::size_t>(worst)]},
                   {"versions", versions},
                   {"counts", {{"registered", plugins.size()}, {"loaded", 0}, {"refused", 0}, {"failed", 0}}},
                   {"plugins", plugins},
                   {"folder", textOrNull(folder.folder)},
                   {"locks", folder.locks},
                   {"legacyFile", folder.legacy},
                   {"findings", folder.findings}};
    for (const Json& plugin : report["plugins"])
        ++report["counts"][plugin["outcome"]].get_ref<Json::number_integer_t&>();
    return report;
}

} // namespace vykeldev::doctor
