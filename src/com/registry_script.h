// The text form in which the component describes its registry content.
//
//   HKCR
//   {
//       NoRemove AppID
//       {
//           '%APPID%' = s 'DepotIntr'
//           'DepotIntr.DLL' { val AppID = s '%APPID%' }
//       }
//   }
//
// A key is a name, bare or in single quotes (a doubled quote stands for one), with an optional
// default value and an optional block of named values and keys. A value is a text (s) or a decimal
// number (d). NoRemove keeps a key on unregistration, ForceRemove empties it before registration.
// %NAME% is replaced inside names and texts, %% stands for one percent sign; the inserted text is
// never parsed again.
#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

namespace depot {

using RegistryScriptData = std::variant<std::string, std::uint32_t>;

struct RegistryScriptValue {
    std::string name;
    RegistryScriptData data;
};

struct RegistryScriptKey {
    std::string name;
    bool noRemove = false;
    bool forceRemove = false;
    std::optional<RegistryScriptData> defaultValue;
    std::vector<RegistryScriptValue> values;
    std::vector<RegistryScriptKey> keys;
};

using RegistryScriptReplacements = std::map<std::string, std::string, std::less<>>;

// Returns the root keys (such as HKCR) of a script, or nothing when it is not well formed, names a
// replacement that is not given, or nests deeper than 32 keys.
std::optional<std::vector<RegistryScriptKey>> ParseRegistryScript(
    std::string_view script, const RegistryScriptReplacements& replacements);

}  // namespace depot
