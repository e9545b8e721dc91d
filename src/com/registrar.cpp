#include "com/registrar.h"

#include "platform/module_state.h"
#include "platform/registry_key.h"
#include "platform/wide_text.h"

namespace depot {
namespace {

struct RootKey {
    std::string_view name;
    HKEY key;
};

const RootKey kRootKeys[] = {
    {"HKCR", HKEY_CLASSES_ROOT},
    {"HKCU", HKEY_CURRENT_USER},
    {"HKLM", HKEY_LOCAL_MACHINE},
};

HKEY RootKeyNamed(std::string_view name) {
    for (const RootKey& root : kRootKeys) {
        if (root.name == name) return root.key;
    }
    return nullptr;
}

std::string_view LoadScript(WORD resource) {
    const HMODULE module = OwnModule();
    const HRSRC found = FindResourceA(module, MAKEINTRESOURCEA(resource), "REGISTRY");
    const HGLOBAL loaded = found ? LoadResource(module, found) : nullptr;
    if (loaded == nullptr) return {};
    return {static_cast<const char*>(LockResource(loaded)), SizeofResource(module, found)};
}

LSTATUS WriteValue(HKEY key, const std::string& name, const RegistryScriptData& data) {
    const std::wstring wideName = WideFromUtf8(name);
    if (const auto* number = std::get_if<std::uint32_t>(&data)) {
        return RegSetValueExW(key, wideName.c_str(), 0, REG_DWORD,
                              reinterpret_cast<const BYTE*>(number), sizeof(*number));
    }
    const std::wstring text = WideFromUtf8(std::get<std::string>(data));
    const auto bytes = static_cast<DWORD>((text.size() + 1) * sizeof(wchar_t));
    return RegSetValueExW(key, wideName.c_str(), 0, REG_SZ,
                          reinterpret_cast<const BYTE*>(text.c_str()), bytes);
}

LSTATUS RemoveTree(HKEY parent, const std::string& name) {
    const LSTATUS status = RegDeleteTreeW(parent, WideFromUtf8(name).c_str());
    return status == ERROR_FILE_NOT_FOUND ? ERROR_SUCCESS : status;
}

LSTATUS CreateKeys(HKEY parent, const std::vector<RegistryScriptKey>& keys);

LSTATUS CreateKey(HKEY parent, const RegistryScriptKey& key) {
    LSTATUS status = key.forceRemove ? RemoveTree(parent, key.name) : ERROR_SUCCESS;
    if (status != ERROR_SUCCESS) return status;
    HKEY created = nullptr;
    status = RegCreateKeyExW(parent, WideFromUtf8(key.name).c_str(), 0, nullptr, 0,
                             KEY_READ | KEY_WRITE, nullptr, &created, nullptr);
    if (status != ERROR_SUCCESS) return status;
    const UniqueHkey owned(created);
    if (key.defaultValue) status = WriteValue(created, "", *key.defaultValue);
    for (const RegistryScriptValue& value : key.values) {
        if (status == ERROR_SUCCESS) status = WriteValue(created, value.name, value.data);
    }
    return status == ERROR_SUCCESS ? CreateKeys(created, key.keys) : status;
}

LSTATUS CreateKeys(HKEY parent, const std::vector<RegistryScriptKey>& keys) {
    for (const RegistryScriptKey& key : keys) {
        const LSTATUS status = CreateKey(parent, key);
        if (status != ERROR_SUCCESS) return status;
    }
    return ERROR_SUCCESS;
}

LSTATUS RemoveKeys(HKEY parent, const std::vector<RegistryScriptKey>& keys) {
    for (const RegistryScriptKey& key : keys) {
        LSTATUS status = ERROR_SUCCESS;
        if (!key.noRemove) {
            status = RemoveTree(parent, key.name);
        } else {
            HKEY opened = nullptr;
            status = RegOpenKeyExW(parent, WideFromUtf8(key.name).c_str(), 0, KEY_READ | KEY_WRITE,
                                   &opened);
            const UniqueHkey owned(opened);
            if (status == ERROR_SUCCESS) status = RemoveKeys(opened, key.keys);
            if (status == ERROR_FILE_NOT_FOUND) status = ERROR_SUCCESS;
        }
        if (status != ERROR_SUCCESS) return status;
    }
    return ERROR_SUCCESS;
}

using Action = LSTATUS (*)(HKEY parent, const std::vector<RegistryScriptKey>& keys);

HRESULT RunScript(WORD resource, const RegistryScriptReplacements& replacements,
                  Action action) noexcept try {
    const std::string_view text = LoadScript(resource);
    if (text.empty()) return HRESULT_FROM_WIN32(ERROR_RESOURCE_NAME_NOT_FOUND);
    const auto roots = ParseRegistryScript(text, replacements);
    if (!roots) return HRESULT_FROM_WIN32(ERROR_INVALID_DATA);
    for (const RegistryScriptKey& root : *roots) {
        const HKEY rootKey = RootKeyNamed(root.name);
        if (rootKey == nullptr) return HRESULT_FROM_WIN32(ERROR_INVALID_DATA);
        const LSTATUS status = action(rootKey, root.keys);
        if (status != ERROR_SUCCESS) return HRESULT_FROM_WIN32(status);
    }
    return S_OK;
} catch (...) {
    return E_OUTOFMEMORY;
}

}  // namespace

HRESULT CRegistrar::AddReplacement(const std::string& name, const std::string& value) noexcept try {
    replacements_[name] = value;
    return S_OK;
} catch (...) {
    return E_OUTOFMEMORY;
}

HRESULT CRegistrar::Register(WORD scriptResource) const noexcept {
    return RunScript(scriptResource, replacements_, CreateKeys);
}

HRESULT CRegistrar::Unregister(WORD scriptResource) const noexcept {
    return RunScript(scriptResource, replacements_, RemoveKeys);
}

}  // namespace depot
