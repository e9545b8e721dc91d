#include "depotctl/definition_edit.h"

#include <algorithm>
#include <cstdio>

#include "config/languages.h"
#include "depotctl/known_values.h"
#include "depotctl/location_checks.h"
#include "depotctl/utf8_text.h"

namespace depot::ctl {
namespace {

constexpr char kHeading[] = "Windows Registry Editor Version 5.00\r\n\r\n";

bool CanBeWritten(const RawValue& value) {
    return value.IsText() || (value.type == kRegistryNumber && value.bytes == sizeof(value.number));
}

std::string ValueLine(const RawValue& value) {
    // A password that belonged to the number before must not stay there either.
    if (IsPassword(value.name)) {
        return "; A password is not shown: store it by --ask-password.\r\n" +
               QuotedForRegistry(value.name) + "=-\r\n";
    }
    if (value.IsText())
        return QuotedForRegistry(value.name) + "=" + QuotedForRegistry(value.text.Plain()) + "\r\n";
    char number[16] = {};
    std::snprintf(number, sizeof(number), "%08x", static_cast<unsigned>(value.number));
    return QuotedForRegistry(value.name) + "=dword:" + number + "\r\n";
}

}  // namespace

std::string QuotedForRegistry(const std::string& text) {
    std::string quoted = "\"";
    for (std::size_t at = 0; at < text.size();) {
        const std::size_t special = std::min(FindAnyAscii(text, "\"\\", at), text.size());
        quoted.append(text, at, special - at);
        if (special < text.size()) quoted.append(1, '\\').append(1, text[special]);
        at = special + 1;
    }
    return quoted + "\"";
}

RawDefinition Changed(RawDefinition definition, const DefinitionChange& change) {
    const auto drop = [&](const std::string& name) {
        std::erase_if(definition.values,
                      [&](const RawValue& value) { return SameName(value.name, name); });
    };
    for (const std::string& name : change.removed) drop(name);
    for (const RawValue& value : change.written) {
        drop(value.name);
        definition.values.push_back(value);
    }
    return definition;
}

std::optional<DefinitionChange> WithoutLocation(const RawDefinition& definition, int location) {
    if (location < 1 || location > definition.Locations()) return std::nullopt;
    DefinitionChange change;
    for (const RawValue& value : definition.values) {
        const auto name = ParseValueName(value.name);
        if (!name || name->location < location) continue;
        change.removed.push_back(value.name);
        if (name->location == location) continue;
        if (!CanBeWritten(value)) return std::nullopt;
        RawValue moved = value;
        moved.name = Numbered(name->known->name, name->location - 1);
        change.written.push_back(std::move(moved));
    }
    return change;
}

Findings NewProblems(const RawDefinition* before, const RawDefinition& after) {
    const Findings known = before == nullptr ? Findings() : CheckDefinition(*before);
    Findings problems = CheckDefinition(after);
    std::erase_if(problems, [&](const Finding& finding) {
        return finding.state != State::kProblem ||
               std::find(known.begin(), known.end(), finding) != known.end();
    });
    return problems;
}

DepotSummary SummaryOf(const RawDefinition& definition, bool isForUser) {
    DepotSummary summary = {definition.key, definition.key, isForUser, false, {}};
    for (const Language& language : kLanguages) {
        const auto name = definition.Text("DisplayName." + std::string(language.code));
        if (!language.servesOthers || !name) continue;
        summary.displayName = *name;
        break;
    }
    summary.isDefault = definition.Number("DefaultDepot") == 1u;
    for (int location = 1; location <= definition.Locations(); ++location) {
        const LocationSettings settings = definition.Location(location);
        if (!settings.IsDirectory() && !HasMacros(settings.path)) {
            summary.roots.push_back(settings.path);
        }
    }
    return summary;
}

std::string RegistryFile(const std::string& keyPath, const DefinitionChange* change) {
    if (change == nullptr) return kHeading + ("[-" + keyPath + "]\r\n");
    std::string text = kHeading + ("[" + keyPath + "]\r\n");
    for (const std::string& name : change->removed) {
        if (!change->Writes(name)) text += QuotedForRegistry(name) + "=-\r\n";
    }
    for (const RawValue& value : change->written) text += ValueLine(value);
    return text;
}

std::string RegistryFileBytes(const std::string& text) {
    std::string bytes = "\xFF\xFE";
    for (const char16_t unit : Utf16(text)) {
        bytes.push_back(static_cast<char>(unit & 0xFF));
        bytes.push_back(static_cast<char>(unit >> 8));
    }
    return bytes;
}

}  // namespace depot::ctl
