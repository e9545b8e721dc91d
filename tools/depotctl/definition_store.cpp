#include "depotctl/definition_store.h"

#include <algorithm>
#include <cstring>

#include "config/profile_encoding.h"
#include "depotctl/encoding.h"
#include "depotctl/failure.h"
#include "manager/depot_list.h"
#include "platform/registry_key.h"
#include "platform/wide_text.h"
#include "platform/wipe.h"

namespace depot::ctl {
namespace {

constexpr char kDepotsOf32BitPrograms[] = "Software\\WOW6432Node\\Quillon\\Farrow\\Depots";

// A key's name has at most 255 characters, a value's 16383.
constexpr DWORD kLongestKeyName = 256;
constexpr DWORD kLongestValueName = 16384;

UniqueHkey OpenKey(HKEY root, const std::string& path, REGSAM access) {
    HKEY key = nullptr;
    const LSTATUS status = RegOpenKeyExW(root, WideFromUtf8(path).c_str(), 0, access, &key);
    return UniqueHkey(status == ERROR_SUCCESS ? key : nullptr);
}

std::string PathOf(const std::string& key) {
    return std::string(kDepotsKey) + "\\" + key;
}

// The machine's definitions stand where the component finds them: as it sees the registry, else in
// the 64-bit view.
REGSAM ViewOf(HKEY root) {
    if (root != HKEY_LOCAL_MACHINE || OpenKey(root, kDepotsKey, KEY_READ)) return 0;
    return OpenKey(root, kDepotsKey, KEY_READ | KEY_WOW64_64KEY) ? REGSAM{KEY_WOW64_64KEY} : 0;
}

bool FitsSystem(std::string_view utf8) {
    std::wstring wide = WideFromUtf8(utf8);
    const WipeAtEnd wiped(wide);
    std::optional<std::string> narrow = ExactFromWide(SystemCodePage(), wide);
    if (narrow) Wipe(*narrow);
    return narrow.has_value();
}

bool IsTextual(DWORD type) {
    return type == REG_SZ || type == REG_EXPAND_SZ || type == REG_MULTI_SZ;
}

// Returns the text without the NULs at its end; `terminated` is whether there were any.
std::wstring WideText(const std::vector<BYTE>& data, bool& terminated) {
    std::wstring text(data.size() / sizeof(wchar_t), L'\0');
    std::memcpy(text.data(), data.data(), text.size() * sizeof(wchar_t));
    const std::size_t length = text.find_last_not_of(L'\0') + 1;
    terminated = length < text.size();
    text.resize(length);
    return text;
}

void SetText(RawValue& value, const std::wstring& text, bool terminated) {
    value.text = Utf8FromWide(text);
    std::optional<std::string> narrow = ExactAnsiFromUtf8(value.text.Plain());
    value.fitsCodePage = narrow.has_value();
    value.fitsSystem = FitsSystem(value.text.Plain());
    value.bytes = (narrow ? narrow->size() : text.size()) + (terminated ? 1 : 0);
    if (narrow) Wipe(*narrow);
}

RawValue MakeValue(const std::wstring& name, DWORD type, const std::vector<BYTE>& data) {
    RawValue value;
    value.name = Utf8FromWide(name);
    value.type = type;
    if (IsTextual(type)) {
        bool terminated = false;
        std::wstring text = WideText(data, terminated);
        const WipeAtEnd wiped(text);
        SetText(value, text, terminated);
        return value;
    }
    value.bytes = data.size();
    std::memcpy(&value.number, data.data(), std::min(data.size(), sizeof(value.number)));
    return value;
}

std::vector<RawValue> ReadValues(HKEY key) {
    std::vector<RawValue> values;
    std::wstring name(kLongestValueName, L'\0');
    for (DWORD index = 0;; ++index) {
        DWORD length = kLongestValueName, type = REG_NONE, bytes = 0;
        LSTATUS status =
            RegEnumValueW(key, index, name.data(), &length, nullptr, &type, nullptr, &bytes);
        if (status != ERROR_SUCCESS) return values;
        std::vector<BYTE> data(bytes + 1);
        const WipeAtEnd wiped(data);  // it may be a password
        status = RegQueryValueExW(key, name.c_str(), nullptr, &type, data.data(), &bytes);
        // Someone else may have changed it meanwhile.
        if (status != ERROR_SUCCESS) continue;
        data.resize(bytes);
        values.push_back(MakeValue(name.substr(0, length), type, data));
    }
}

std::vector<std::string> SubkeyNames(HKEY key) {
    std::vector<std::string> names;
    for (DWORD index = 0;; ++index) {
        wchar_t name[kLongestKeyName] = {};
        DWORD length = kLongestKeyName;
        if (RegEnumKeyExW(key, index, name, &length, nullptr, nullptr, nullptr, nullptr) !=
            ERROR_SUCCESS) {
            return names;
        }
        names.push_back(Utf8FromWide({name, length}));
    }
}

void ReadHive(HKEY root, std::vector<StoredDefinition>& definitions) {
    const UniqueHkey depots = OpenKey(root, kDepotsKey, KEY_READ | ViewOf(root));
    if (!depots) return;
    for (const std::string& key : SubkeyNames(depots.get())) {
        auto raw = ReadDefinition(root, key);
        const bool isReadable = raw.has_value();
        definitions.push_back(
            {isReadable ? *std::move(raw) : RawDefinition{key, {}}, root, isReadable});
    }
}

void CheckHive(HKEY root, Findings& findings) {
    HKEY opened = nullptr;
    const LSTATUS status = RegOpenKeyExA(root, kDepotsKey, 0, KEY_READ | ViewOf(root), &opened);
    const UniqueHkey depots(status == ERROR_SUCCESS ? opened : nullptr);
    if (!depots) {
        if (status != ERROR_FILE_NOT_FOUND) {
            findings.push_back(Wrong("registry",
                                     "the depots of " + OwnerOf(root) + " may not be read (error " +
                                         std::to_string(status) + ")",
                                     "grant the right to read the key"));
        }
        return;
    }
    for (const RawValue& value : ReadValues(depots.get())) {
        if (value.name.empty() && value.text.empty()) continue;
        findings.push_back(
            Wrong(value.name.empty() ? "(Default)" : value.name,
                  "it stands beside the depots of " + OwnerOf(root) + " and is never read",
                  "move it into the key of a depot"));
    }
}

std::vector<std::string> NamesOf32BitPrograms() {
    const UniqueHkey other = OpenKey(HKEY_LOCAL_MACHINE, kDepotsOf32BitPrograms, KEY_READ);
    return other ? SubkeyNames(other.get()) : std::vector<std::string>();
}

Finding ReadBy32BitPrograms(const std::string& what) {
    return Wrong("registry",
                 what +
                     " in the part of the registry for 32-bit programs (WOW6432Node), where "
                     "depots are never read",
                 "move what stands there below HKEY_LOCAL_MACHINE\\" + std::string(kDepotsKey));
}

[[noreturn]] void FailToWrite(HKEY root, const std::string& key, LSTATUS status) {
    std::string text = "cannot write the depot " + key + " of " + OwnerOf(root) + " (error " +
                       std::to_string(status) + ")";
    if (status == ERROR_ACCESS_DENIED && root == HKEY_LOCAL_MACHINE) {
        text += "; run the command as an administrator";
    }
    Refuse(text);
}

LSTATUS WriteValue(HKEY key, const RawValue& value) {
    const std::wstring name = WideFromUtf8(value.name);
    if (!value.IsText()) {
        return RegSetValueExW(key, name.c_str(), 0, REG_DWORD,
                              reinterpret_cast<const BYTE*>(&value.number), sizeof(value.number));
    }
    std::wstring text = WideFromUtf8(value.text.Plain());
    const WipeAtEnd wiped(text);
    const auto bytes = static_cast<DWORD>((text.size() + 1) * sizeof(wchar_t));
    return RegSetValueExW(key, name.c_str(), 0, value.type,
                          reinterpret_cast<const BYTE*>(text.c_str()), bytes);
}

LSTATUS Apply(HKEY key, const DefinitionChange& change) {
    for (const std::string& name : change.removed) {
        const LSTATUS status = RegDeleteValueW(key, WideFromUtf8(name).c_str());
        if (status != ERROR_SUCCESS && status != ERROR_FILE_NOT_FOUND) return status;
    }
    for (const RawValue& value : change.written) {
        const LSTATUS status = WriteValue(key, value);
        if (status != ERROR_SUCCESS) return status;
    }
    return ERROR_SUCCESS;
}

}  // namespace

std::vector<StoredDefinition> ReadDefinitions() {
    std::vector<StoredDefinition> definitions;
    ReadHive(HKEY_CURRENT_USER, definitions);
    ReadHive(HKEY_LOCAL_MACHINE, definitions);
    return definitions;
}

std::optional<RawDefinition> ReadDefinition(HKEY root, const std::string& key) {
    const UniqueHkey opened = OpenKey(root, PathOf(key), KEY_READ | ViewOf(root));
    if (!opened) return std::nullopt;
    return RawDefinition{key, ReadValues(opened.get()), !SubkeyNames(opened.get()).empty()};
}

Findings CheckStoredKey(const std::string& key) {
    if (ExactAnsiFromUtf8(key)) return {};
    return {Wrong("Key", "it has characters that the system's code page does not have",
                  "choose another one")};
}

Findings CheckDepotsKeys() {
    Findings findings;
    CheckHive(HKEY_CURRENT_USER, findings);
    CheckHive(HKEY_LOCAL_MACHINE, findings);
    if (!NamesOf32BitPrograms().empty())
        findings.push_back(ReadBy32BitPrograms("there are depots"));
    return findings;
}

std::optional<Finding> FindFor32BitPrograms(const std::string& key) {
    for (const std::string& name : NamesOf32BitPrograms()) {
        if (SameKey(name, key)) return ReadBy32BitPrograms("there is one");
    }
    return std::nullopt;
}

void WriteDefinition(HKEY root, const std::string& key, const DefinitionChange& change) {
    HKEY created = nullptr;
    DWORD disposition = 0;
    LSTATUS status =
        RegCreateKeyExW(root, WideFromUtf8(PathOf(key)).c_str(), 0, nullptr, 0,
                        KEY_READ | KEY_WRITE | ViewOf(root), nullptr, &created, &disposition);
    if (status != ERROR_SUCCESS) FailToWrite(root, key, status);
    const UniqueHkey owner(created);
    status = Apply(created, change);
    if (status == ERROR_SUCCESS) return;
    if (disposition == REG_CREATED_NEW_KEY) RegDeleteTreeW(root, WideFromUtf8(PathOf(key)).c_str());
    FailToWrite(root, key, status);
}

void RemoveDefinition(HKEY root, const std::string& key) {
    const UniqueHkey depots =
        OpenKey(root, kDepotsKey, KEY_READ | KEY_WRITE | DELETE | ViewOf(root));
    const LSTATUS status = depots ? RegDeleteTreeW(depots.get(), WideFromUtf8(key).c_str())
                                  : LSTATUS{ERROR_ACCESS_DENIED};
    if (status != ERROR_SUCCESS) FailToWrite(root, key, status);
}

HKEY RootOf(bool forMachine) {
    return forMachine ? HKEY_LOCAL_MACHINE : HKEY_CURRENT_USER;
}

std::string HiveName(HKEY root) {
    return root == HKEY_CURRENT_USER ? "HKEY_CURRENT_USER\\" : "HKEY_LOCAL_MACHINE\\";
}

std::string OwnerOf(HKEY root) {
    return root == HKEY_CURRENT_USER ? "the user" : "the machine";
}

RawValue StoredText(std::string name, SecretText text) {
    RawValue value = TextValue(std::move(name), std::move(text));
    std::optional<std::string> narrow = ExactAnsiFromUtf8(value.text.Plain());
    value.fitsCodePage = narrow.has_value();
    value.fitsSystem = FitsSystem(value.text.Plain());
    if (narrow) value.bytes = narrow->size() + 1;
    if (narrow) Wipe(*narrow);
    return value;
}

}  // namespace depot::ctl
