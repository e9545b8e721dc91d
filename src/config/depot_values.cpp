#include "config/depot_values.h"

#include <iterator>

#include "platform/text.h"

namespace depot {
namespace {

// What reading needs of a row: the component carries no more of the table than this.
struct ValueToRead {
    const char* name;
    ValueScope scope;
    ValueMember member;
    bool isRequired;
    std::optional<std::uint32_t> unreadable;
};

constexpr auto kValuesToRead = [] {
    std::array<ValueToRead, kDepotValues.size()> values{};
    for (std::size_t at = 0; at < values.size(); ++at) {
        const DepotValue& row = kDepotValues[at];
        values[at] = {row.name, row.scope, row.member, row.form.isRequired, row.form.unreadable};
    }
    return values;
}();

void Store(std::string& text, DepotSettings& settings, const ValueMember& member) {
    settings.*std::get<std::string DepotSettings::*>(member) = std::move(text);
}

void Store(std::string& text, LocationSettings& settings, const ValueMember& member) {
    if (const auto* const secret = std::get_if<SecretText LocationSettings::*>(&member)) {
        settings.** secret = std::move(text);
    } else {
        settings.*std::get<std::string LocationSettings::*>(member) = std::move(text);
    }
}

template <class Settings>
bool Read(const ValueSource& source, ValueScope scope, const std::string& suffix,
          Settings& settings) {
    const Settings standard;
    for (const ValueToRead& value : kValuesToRead) {
        if (value.scope != scope) continue;
        const std::string name = value.name + suffix;
        if (const auto* const number = std::get_if<std::uint32_t Settings::*>(&value.member)) {
            const auto found = source.Number(name, {scope, standard.**number, value.unreadable});
            if (found) settings.** number = *found;
            continue;
        }
        std::optional<std::string> found = source.Text(name);
        if (!found && value.isRequired) return false;
        if (found) Store(*found, settings, value.member);
    }
    return true;
}

}  // namespace

// Every member has its row. A loop takes a fraction of the instructions of so many assignments.
LocationSettings& LocationSettings::operator=(const LocationSettings& other) {
    if (this == &other) return *this;
    for (const ValueToRead& value : kValuesToRead) {
        if (const auto* const text = std::get_if<std::string LocationSettings::*>(&value.member)) {
            this->** text = other.**text;
        } else if (const auto* const number =
                       std::get_if<std::uint32_t LocationSettings::*>(&value.member)) {
            this->** number = other.**number;
        } else if (const auto* const secret =
                       std::get_if<SecretText LocationSettings::*>(&value.member)) {
            this->** secret = other.**secret;
        }
    }
    return *this;
}

void ReadDepotValues(const ValueSource& source, DepotSettings& settings) {
    Read(source, ValueScope::kDepot, {}, settings);
}

bool ReadLocationValues(const ValueSource& source, int location, LocationSettings& settings) {
    const std::string suffix = NumberText(static_cast<std::uint32_t>(location));
    if (!Read(source, ValueScope::kLocation, suffix, settings)) return false;
    if (settings.type >= std::size(kOwnScopes)) settings.type = kFolderLocation;
    if (const auto own = kOwnScopes[settings.type]) Read(source, *own, suffix, settings);
    return true;
}

}  // namespace depot
