#include "depotctl/definition_file.h"

#include <algorithm>
#include <cstdio>
#include <map>

#include "depotctl/definition_edit.h"
#include "depotctl/known_values.h"
#include "depotctl/utf8_text.h"
#include "platform/digest.h"

namespace depot::ctl {
namespace {

constexpr char kUserHive[] = "HKEY_CURRENT_USER";
constexpr char kMachineHive[] = "HKEY_LOCAL_MACHINE";
constexpr char kRegistryHeading[] = "Windows Registry Editor Version 5.00\r\n";
constexpr char kPasswordRemark[] = "a password is not shown: store it by --ask-password";

bool HasControls(std::string_view text) {
    return std::any_of(text.begin(), text.end(),
                       [](char c) { return static_cast<unsigned char>(c) < ' '; });
}

bool CanBeWritten(const RawValue& value) {
    if (HasControls(value.name)) return false;
    if (value.IsText()) return !HasControls(value.text.Plain());
    return value.type == kRegistryNumber && value.bytes == sizeof(value.number);
}

const char* HiveOf(const FiledDefinition& definition) {
    return definition.isForMachine ? kMachineHive : kUserHive;
}

std::string Hex(std::uint32_t number) {
    char text[16] = {};
    std::snprintf(text, sizeof(text), "%08x", static_cast<unsigned>(number));
    return text;
}

// Text whose variables are to be replaced is written as its bytes.
std::string ExpandableBytes(const std::string& text) {
    std::string bytes = "hex(2):";
    char pair[16] = {};
    for (const char16_t unit : Utf16(text) + u'\0') {
        std::snprintf(pair, sizeof(pair), "%02x,%02x,", unit & 0xFFU, unit >> 8U);
        bytes += pair;
    }
    bytes.pop_back();
    return bytes;
}

std::string RegistryData(const RawValue& value) {
    if (!value.IsText()) return "dword:" + Hex(value.number);
    return value.type == kRegistryExpandableText ? ExpandableBytes(value.text.Plain())
                                                 : QuotedForRegistry(value.text.Plain());
}

std::string RegistryText(const FiledDefinition& definition, const std::string& path) {
    std::string text;
    if (definition.isRemoved) text += "\r\n[-" + path + "]\r\n";
    const DefinitionChange& change = definition.change;
    if (definition.isRemoved && change.written.empty()) return text;
    text += "\r\n[" + path + "]\r\n";
    for (const std::string& name : change.removed) {
        if (IsPassword(name)) text += std::string("; ") + kPasswordRemark + "\r\n";
        text += QuotedForRegistry(name) + "=-\r\n";
    }
    for (const RawValue& value : change.written) {
        text += QuotedForRegistry(value.name) + "=" + RegistryData(value) + "\r\n";
    }
    return text;
}

std::string Escaped(std::string_view text) {
    static const std::map<char, std::string_view> kReferences = {
        {'&', "&amp;"}, {'<', "&lt;"}, {'>', "&gt;"}, {'"', "&quot;"}};
    std::string escaped;
    for (const char c : text) {
        const auto reference = kReferences.find(c);
        escaped += reference == kReferences.end() ? std::string_view(&c, 1) : reference->second;
    }
    return escaped;
}

// The same for the same item in every file, so that a later file updates what an earlier one made.
std::string ItemIdentifier(const std::string& subject) {
    const Digest digest = DigestOf(subject.data(), subject.size());
    std::string identifier = "{";
    char pair[16] = {};
    for (std::size_t at = 0; at < 16; ++at) {
        std::snprintf(pair, sizeof(pair), "%02X", unsigned{digest[at]});
        if (at == 4 || at == 6 || at == 8 || at == 10) identifier += '-';
        identifier += pair;
    }
    return identifier + "}";
}

struct Item {
    std::string action;
    std::string name;  // empty for the whole key
    std::string type;
    std::string value;
    const char* image;  // the picture beside it in the editor
};

std::string ItemText(const Item& item, const std::string& hive, const std::string& key) {
    const std::string name = Escaped(item.name.empty() ? key : item.name);
    std::string text = "    <Registry clsid=\"{9CD4B2F4-923D-47f5-A062-E897DD1DAD50}\" name=\"" +
                       name + "\" status=\"" + name + "\" image=\"" + item.image + "\" uid=\"" +
                       ItemIdentifier(hive + "\\" + key + "\\" + item.name + "\\" + item.action) +
                       "\">\r\n";
    text += "      <Properties action=\"" + item.action +
            "\" displayDecimal=\"1\" default=\"0\" hive=\"" + hive + "\" key=\"" + Escaped(key) +
            "\" name=\"" + Escaped(item.name) + "\" type=\"" + item.type + "\" value=\"" +
            Escaped(item.value) + "\"/>\r\n    </Registry>\r\n";
    return text;
}

std::string ItemText(const RawValue& value, const std::string& hive, const std::string& key) {
    if (!value.IsText()) {
        return ItemText({"U", value.name, "REG_DWORD", Hex(value.number), "12"}, hive, key);
    }
    const char* const type = value.type == kRegistryExpandableText ? "REG_EXPAND_SZ" : "REG_SZ";
    return ItemText({"U", value.name, type, value.text.Plain(), "7"}, hive, key);
}

std::string ItemsText(const FiledDefinition& definition, std::string_view depotsKey) {
    const std::string hive = HiveOf(definition);
    const std::string key = std::string(depotsKey) + "\\" + definition.key;
    std::string text = "  <Collection clsid=\"{53B533F5-224C-47e3-B01B-CA3B3F3FF4BF}\" name=\"" +
                       Escaped(definition.key) + "\">\r\n";
    if (definition.isRemoved) text += ItemText({"D", "", "REG_SZ", "", "3"}, hive, key);
    for (const std::string& name : definition.change.removed) {
        if (IsPassword(name)) text += std::string("    <!-- ") + kPasswordRemark + " -->\r\n";
        text += ItemText({"D", name, "REG_SZ", "", "8"}, hive, key);
    }
    for (const RawValue& value : definition.change.written) text += ItemText(value, hive, key);
    return text + "  </Collection>\r\n";
}

bool SameStart(std::string_view text, std::string_view start) {
    return text.size() >= start.size() && SameName(text.substr(0, start.size()), start);
}

// Takes "HKEY_...\" off the path.
std::optional<bool> TakeHive(std::string_view& path) {
    for (const char* const hive : {kUserHive, kMachineHive}) {
        const std::string start = std::string(hive) + "\\";
        if (!SameStart(path, start)) continue;
        path.remove_prefix(start.size());
        return hive == kMachineHive;
    }
    return std::nullopt;
}

// What is said last of a value counts.
void Drop(DefinitionChange& change, const std::string& name) {
    std::erase_if(change.written,
                  [&](const RawValue& value) { return SameName(value.name, name); });
    std::erase_if(change.removed, [&](const std::string& other) { return SameName(other, name); });
}

}  // namespace

DefinitionChange WholeDefinition(const RawDefinition& definition,
                                 std::vector<std::string>& leftOut) {
    DefinitionChange change;
    for (const RawValue& value : definition.values) {
        if (IsPassword(value.name)) {
            change.removed.push_back(value.name);
        } else if (CanBeWritten(value)) {
            change.written.push_back(value);
        } else {
            leftOut.push_back(value.name);
        }
    }
    return change;
}

std::string FileText(const std::vector<FiledDefinition>& definitions, FileForm form,
                     std::string_view depotsKey) {
    if (form == FileForm::kRegistry) {
        std::string text = kRegistryHeading;
        for (const FiledDefinition& definition : definitions) {
            text += RegistryText(definition, HiveOf(definition) + ("\\" + std::string(depotsKey)) +
                                                 "\\" + definition.key);
        }
        return text;
    }
    std::string text =
        "<?xml version=\"1.0\" encoding=\"utf-8\"?>\r\n"
        "<RegistrySettings clsid=\"{A3CCFC41-DFDB-43a5-8D26-0FE8B954DA51}\">\r\n";
    for (const FiledDefinition& definition : definitions) text += ItemsText(definition, depotsKey);
    return text + "</RegistrySettings>\r\n";
}

bool DefinitionCollector::Enter(std::string_view path) {
    const auto isForMachine = TakeHive(path);
    const std::string start = std::string(depotsKey_) + "\\";
    if (!isForMachine || !SameStart(path, start)) return false;
    const std::string key(path.substr(start.size()));
    if (key.empty() || FindAscii(key, '\\') != std::string::npos) return false;
    const auto found = std::find_if(
        definitions_.begin(), definitions_.end(), [&](const FiledDefinition& definition) {
            return definition.isForMachine == *isForMachine && SameName(definition.key, key);
        });
    current_ = static_cast<std::size_t>(found - definitions_.begin());
    if (found == definitions_.end()) definitions_.push_back({*isForMachine, key, false, {}});
    return true;
}

void DefinitionCollector::RemoveAll() {
    Current().isRemoved = true;
    Current().change = {};
}

void DefinitionCollector::Remove(const std::string& name) {
    DefinitionChange& change = Current().change;
    Drop(change, name);
    change.removed.push_back(name);
}

void DefinitionCollector::Write(RawValue value) {
    DefinitionChange& change = Current().change;
    Drop(change, value.name);
    change.written.push_back(std::move(value));
}

}  // namespace depot::ctl
