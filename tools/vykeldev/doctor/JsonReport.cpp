#include "doctor/Report.h"

namespace vykeldev::doctor {
namespace {

Json toJson(const LibraryImage& image) {
    static constexpr const char* kinds[] = {"no library", "other machine", "library"};
    return {{"kind", kinds[static_cast<std::size_t>(image.kind)]},
            {"missingExports", image.missingExports},
            {"imports", image.imports},
            {"missingImports", image.missingImports}};
}

Json toJson(const PluginAccount& plugin) {
    Json json = {{"name", plugin.name},
                 {"path", orNull(plugin.path)},
                 {"outcome", nameOf(plugin.outcome)},
                 {"failedStep", nullptr},
                 {"detail", plugin.detail},
                 {"system", nullptr},
                 {"error", nullptr},
                 {"milliseconds", plugin.milliseconds},
                 {"devices", plugin.deviceNumbers.size()},
                 {"deviceNumbers", Json::array()},
                 {"image", nullptr}};
    if (plugin.failedStep)
        json["failedStep"] = nameOf(*plugin.failedStep);
    if (plugin.error) {
        json["error"] = {{"code", plugin.error->code}, {"document", plugin.error->document}};
        if (plugin.error->system)
            json["system"] = {{"code", *plugin.error->system}, {"text", plugin.error->systemText}};
    }
    for (const auto& number : plugin.deviceNumbers)
        json["deviceNumbers"].push_back(orNull(number));
    if (plugin.image)
        json["image"] = toJson(*plugin.image);
    return json;
}

Json toJson(const Finding& finding) {
    const FindingKind& kind = *finding.kind;
    return {{"id", kind.id},
            {"severity", nameOf(kind.severity)},
            {"subject", finding.subject},
            {"line", finding.line > 0 ? Json(finding.line) : Json()},
            {"detail", finding.detail},
            {"meaning", kind.meaning},
            {"remedy", kind.remedy}};
}

template <class T>
Json toArray(const std::vector<T>& items) {
    Json array = Json::array();
    for (const T& item : items)
        array.push_back(toJson(item));
    return array;
}

const char* stateOf(const Report& report) {
    return report.count(Severity::Error) > 0     ? "broken"
           : report.count(Severity::Warning) > 0 ? "warnings"
                                                 : "healthy";
}

} // namespace

Json toJson(const Versions& versions) {
    return {{"tool", versions.tool},
            {"libraryPath", versions.libraryPath},
            {"library", versions.library.empty() ? Json() : Json(versions.library)},
            {"system", versions.system}};
}

Json toJson(const std::vector<LockState>& locks) {
    Json array = Json::array();
    for (const LockState& lock : locks)
        array.push_back(
            {{"path", lock.path}, {"state", nameOf(lock.state)}, {"secondsWaited", lock.secondsWaited}});
    return array;
}

Json registrationsToJson(const Report& report) {
    Json array = Json::array();
    for (const PluginAccount& plugin : report.plugins)
        array.push_back({{"name", plugin.name},
                         {"type", plugin.valueType},
                         {"bytes", plugin.valueBytes},
                         {"path", orNull(plugin.path)}});
    return array;
}

Json toJson(const Report& report) {
    return {{"schemaVersion", 1},
            {"state", stateOf(report)},
            {"versions", toJson(report.versions)},
            {"counts",
             {{"registered", report.plugins.size()},
              {"loaded", report.count(Outcome::Loaded)},
              {"refused", report.count(Outcome::Refused)},
              {"failed", report.count(Outcome::Failed)}}},
            {"plugins", toArray(report.plugins)},
            {"folder", report.folder.empty() ? Json() : Json(report.folder)},
            {"locks", toJson(report.locks)},
            {"legacyFile",
             {{"path", report.legacy.path},
              {"state", report.legacy.state},
              {"layout", report.legacy.layout.empty() ? Json() : Json(report.legacy.layout)}}},
            {"findings", toArray(report.findings)}};
}

} // namespace vykeldev::doctor
