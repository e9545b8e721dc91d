#include "platform/known_folders.h"

#include <shlobj.h>

#include <memory>

#include "platform/paths.h"
#include "platform/registry_key.h"
#include "platform/text.h"

namespace depot {
namespace {

// Frees through the shell's own allocator.
struct ItemListFreer {
    void operator()(ITEMIDLIST* list) const { ILFree(list); }
};
using UniqueItemList = std::unique_ptr<ITEMIDLIST, ItemListFreer>;

constexpr const char* kSoundEvents[] = {"SystemExclamation", "SystemStart"};

std::string SoundFileOf(const std::string& event) {
    const std::string path =
        Concatenate({"AppEvents\\Schemes\\Apps\\.Default\\", event, "\\.Default"});
    const auto key = RegistryKey::Open(HKEY_CURRENT_USER, path, KEY_QUERY_VALUE);
    return key ? key->ReadString("", kMaxPathBytes).value_or("") : std::string();
}

}  // namespace

std::string GetSpecialFolderPath(int folder) {
    ITEMIDLIST* list = nullptr;
    SHGetSpecialFolderLocation(nullptr, folder, &list);
    const UniqueItemList owner(list);
    char path[MAX_PATH] = {};
    if (owner) SHGetPathFromIDListA(owner.get(), path);
    return path;
}

std::string GetSystemSoundFolder() {
    for (const char* event : kSoundEvents) {
        const std::string file = SoundFileOf(event);
        if (!file.empty()) return RemoveTrailingBackslash(FolderPrefix(file));
    }
    return {};
}

}  // namespace depot
