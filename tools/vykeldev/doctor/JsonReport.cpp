#include "doctor/JsonReport.h"

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
    Json numbers = Json::array();
    for (const Json& device : plugin.devices)
        numbers.push_back(device["number"]);
    json = {{"name", plugin.name},
            {"path", plugin.path},
            {"outcome", nameOf(plugin.outcome)},
            {"failedStep", plugin.failedStep ? Json(nameOf(*plugin.failedStep)) : Json()},
            {"detail", plugin.detail},
            {"system", nullptr},
            {"error", nullptr},
            {"milliseconds", plugin.milliseconds},
            {"devices", numbers.size()},
            {"deviceNumbers", numbers},
            {"image", plugin.image}};
    json.update(factsOf(plugin.path.value_or("")));
    if (plugin.error)
        json["error"] = {{"code", plugin.error->code}, {"document", plugin.error->document}};
    if (plugin.error && plugin.error->system)
        json["system"] = {{"code", *plugin.error->system}, {"text", plugin.error->systemText}};
}

void to_json(Json& json, const Report& report) {
    const bool warned = report.count(Severity::Warning) > 0;
    json = {{"schemaVersion", 1},
            {"state", report.count(Severity::Error) > 0 ? "broken"
                      : warned                          ? "warnings"
                                                        : "healthy"},
            {"versions", report.versions},
            {"counts",
             {{"registered", report.plugins.size()},
              {"loaded", report.count(PluginOutcome::Loaded)},
              {"refused", report.count(PluginOutcome::Refused)},
              {"failed", report.count(PluginOutcome::Failed)}}},
            {"plugins", report.plugins},
            {"folder", textOrNull(report.folder)},
            {"locks", report.locks},
            {"legacyFile", report.legacy},
            {"findings", report.findings}};
    for (std::size_t i = 0; report.listsDevices && i < report.plugins.size(); ++i)
        json["plugins"][i]["deviceList"] = report.plugins[i].devices;
}

} // namespace vykeldev::doctor
