// depots: what is defined, and whether it can be used.
#include <algorithm>
#include <functional>
#include <memory>
#include <vector>

#include "depotctl/access.h"
#include "depotctl/command_line.h"
#include "depotctl/commands.h"
#include "depotctl/definition.h"
#include "depotctl/encoding.h"
#include "depotctl/known_values.h"
#include "depotctl/program.h"
#include "depotctl/together.h"
#include "depotctl/utf8_text.h"

namespace depot::ctl {
namespace {

// What stands for the owner of the depot that no registry key defines.
constexpr char kBuiltIn[] = "nobody";

Json StateOf(const LocationState& state) {
    const std::optional<Problem>& why = state.problem ? state.problem : state.writingProblem;
    Json json = {{"reachable", !state.problem}, {"writable", !why}};
    if (why) json["problem"] = why->text;
    return json;
}

Json LocationJson(CDepotPath& location) {
    Json json = {{"type", kTypeWords[location.type].word}};
    if (location.Has(FindValue("Host")->scope)) {
        json["host"] = Utf8FromAnsi(location.host);
        json["port"] = location.port;
    }
    json["path"] = Utf8FromAnsi(location.path);
    json["expanded"] = Utf8FromAnsi(ExpandedPath(location));
    return json;
}

// The first location that can be used is the active one, else the first of all.
void MarkActive(Json& locations) {
    const auto found = std::find_if(locations.begin(), locations.end(), [](const Json& location) {
        return location["reachable"] == true;
    });
    const auto active = found == locations.end() ? locations.begin() : found;
    for (Json& location : locations) location["active"] = &location == &*active;
}

Json LocationsJson(const CDepot& depot) {
    Json locations = Json::array();
    for (std::size_t index = 0; index < depot.paths->Count(); ++index) {
        locations.push_back(LocationJson(*depot.paths->At(index)));
    }
    return locations;
}

Json DepotJson(const CDepot& depot, const CDepots& depots) {
    const bool ordered = depot.orderIndex != CDepot::kNoOrderIndex;
    const bool forUser = depot.rootKey == HKEY_CURRENT_USER;
    return {{"key", Utf8FromAnsi(depot.name)},
            {"displayName", Utf8FromAnsi(depot.displayName)},
            {"default", &depot == depots.defaultDepot},
            {"order", ordered ? Json(depot.orderIndex) : Json()},
            {"contains", depot.contains},
            {"icon", Utf8FromAnsi(depot.icon)},
            {"definedFor", depot.name.empty() ? kBuiltIn
                           : forUser          ? "user"
                                              : "machine"},
            {"locations", LocationsJson(depot)}};
}

// Tries the locations of all depots at once and adds what became of each.
void AddStates(const CDepots& depots, Json& all) {
    std::vector<std::unique_ptr<LocationAttempt>> attempts;
    for (const CDepot* depot : depots) {
        for (std::size_t index = 0; index < depot->paths->Count(); ++index) {
            attempts.push_back(MakeAttempt(*depot->paths->At(index)));
        }
    }
    std::vector<LocationState> states(attempts.size());
    std::vector<std::function<void()>> work;
    for (std::size_t index = 0; index < attempts.size(); ++index) {
        work.emplace_back(
            [&attempt = *attempts[index], &state = states[index]] { state = attempt.Try(); });
    }
    DoTogether(work);
    auto state = states.begin();
    for (Json& depot : all) {
        for (Json& location : depot["locations"]) location.update(StateOf(*state++));
        MarkActive(depot["locations"]);
    }
}

std::string Text(const Json& value) {
    return Printable(value.get<std::string>());
}

std::string StateText(const Json& location) {
    if (!location.contains("reachable")) return {};
    std::string text = location["active"] == true ? ", active" : "";
    if (location["reachable"] != true) {
        text += ", not reachable";
    } else {
        text += location["writable"] == true ? ", writable" : ", read-only";
    }
    if (location.contains("problem")) text += ": " + Text(location["problem"]);
    return text;
}

std::string LocationText(const Json& location, std::size_t number) {
    std::string text = "  " + std::to_string(number) + " " + Text(location["type"]);
    if (location.contains("host")) {
        text += " at " + Text(location["host"]) + ":" + location["port"].dump();
    }
    text += StateText(location) + "\n    " + Text(location["path"]) + "\n";
    if (location["expanded"] != location["path"])
        text += "    = " + Text(location["expanded"]) + "\n";
    return text;
}

std::string DepotText(const Json& depot) {
    const std::string key = Text(depot["key"]);
    std::string text = "<" + key + ">";
    if (depot["displayName"] != depot["key"]) text += " " + Text(depot["displayName"]);
    if (depot["default"] == true) text += ", default";
    if (!depot["order"].is_null()) text += ", order " + depot["order"].dump();
    if (depot["contains"] != 0) text += ", contains " + depot["contains"].dump();
    text += depot["definedFor"] == kBuiltIn ? ", built in"
                                            : ", defined for the " + Text(depot["definedFor"]);
    text += "\n";
    std::size_t number = 0;
    for (const Json& location : depot["locations"]) text += LocationText(location, ++number);
    return text;
}

void ShowDepots(Program& program, bool offline) {
    CDepots& depots = program.Depots();
    Json all = Json::array();
    for (const CDepot* depot : depots) all.push_back(DepotJson(*depot, depots));
    if (!offline) AddStates(depots, all);
    std::string text;
    if (!program.renderer.IsJson()) {
        for (const Json& depot : all) text += DepotText(depot);
    }
    program.renderer.Answer(all, text);
}

}  // namespace

void AddDepotsCommand(CLI::App& app, Program& program) {
    const auto [command, offline] =
        AddCommand<bool>(app, program,
                         {"depots", "Show the depots and whether they can be used",
                          "Examples:\n  depotctl depots\n  depotctl depots --json --offline"},
                         ShowDepots);
    command.add_flag("--offline", offline, "Only what is defined; no folder or server is tried");
    AddDefineCommands(command, program);
    AddExchangeCommands(command, program);
}

}  // namespace depot::ctl
