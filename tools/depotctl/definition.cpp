#include "depotctl/definition.h"

#include <algorithm>

#include "depotctl/ascii.h"
#include "depotctl/known_values.h"

namespace depot::ctl {
namespace {

// A definition as what its values are read from, by the component's own rules.
class DefinitionValues : public ValueSource {
public:
    explicit DefinitionValues(const RawDefinition& definition) : definition_(definition) {}

    std::optional<std::string> Text(const std::string& name) const override {
        return definition_.Text(name);
    }
    std::optional<std::uint32_t> Number(const std::string& name,
                                        const NumberReading& reading) const override {
        const auto number = definition_.Number(name);
        return number || definition_.Find(name) == nullptr ? number : reading.unreadable;
    }

private:
    const RawDefinition& definition_;
};

bool HasExactSize(std::string_view name) {
    const auto parsed = ParseValueName(name);
    return parsed && parsed->known->scope == ValueScope::kDirectory;
}

}  // namespace

RawValue TextValue(std::string name, SecretText text) {
    RawValue value;
    value.name = std::move(name);
    value.bytes = text.Plain().size() + 1;
    value.text = std::move(text);
    return value;
}

RawValue NumberValue(std::string name, std::uint32_t number) {
    RawValue value;
    value.name = std::move(name);
    value.type = kRegistryNumber;
    value.number = number;
    value.bytes = sizeof(number);
    return value;
}

const RawValue* RawDefinition::Find(std::string_view name) const {
    const auto found = std::find_if(values.begin(), values.end(), [name](const RawValue& value) {
        return SameName(value.name, name);
    });
    return found == values.end() ? nullptr : &*found;
}

std::optional<std::string> RawDefinition::Text(std::string_view name) const {
    const RawValue* const value = Find(name);
    if (value == nullptr || value->bytes > kLongestTextBytes) return std::nullopt;
    const std::string& text = value->text;
    return std::optional<std::string>(std::in_place, text, 0, text.find('\0'));
}

std::optional<std::uint32_t> RawDefinition::Number(std::string_view name) const {
    const RawValue* const value = Find(name);
    if (value == nullptr || value->type != kRegistryNumber) return std::nullopt;
    if (value->bytes != sizeof(value->number) && HasExactSize(name)) return std::nullopt;
    return value->number;
}

int RawDefinition::Locations() const {
    int count = 0;
    while (Text(Numbered("Path", count + 1))) ++count;
    return count;
}

LocationSettings RawDefinition::Location(int number) const {
    LocationSettings settings;
    ReadLocationValues(DefinitionValues(*this), number, settings);
    return settings;
}

bool DefinitionChange::Writes(std::string_view name) const {
    return std::any_of(written.begin(), written.end(),
                       [name](const RawValue& value) { return SameName(value.name, name); });
}

std::string Numbered(std::string_view name, int location) {
    return std::string(name) + std::to_string(location);
}

bool SameName(std::string_view left, std::string_view right) {
    return std::equal(left.begin(), left.end(), right.begin(), right.end(),
                      [](char a, char b) { return LowerAscii(a) == LowerAscii(b); });
}

}  // namespace depot::ctl
