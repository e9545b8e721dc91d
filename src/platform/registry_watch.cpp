#include "platform/registry_watch.h"

#include <algorithm>

#include "platform/paths.h"

namespace depot {
namespace {

// Keeps the event from being signalled when the thread that asked for it ends. Systems before
// Windows 8 refuse it: there a list is read once more than needed.
constexpr DWORD kForAllThreads = 0x10000000;  // REG_NOTIFY_THREAD_AGNOSTIC

constexpr DWORD kAnyChange = REG_NOTIFY_CHANGE_NAME | REG_NOTIFY_CHANGE_ATTRIBUTES |
                             REG_NOTIFY_CHANGE_LAST_SET | REG_NOTIFY_CHANGE_SECURITY;

bool Notify(HKEY key, HANDLE event, bool everythingBelow) {
    const DWORD changes = everythingBelow ? kAnyChange : DWORD{REG_NOTIFY_CHANGE_NAME};
    const BOOL below = everythingBelow ? TRUE : FALSE;
    return RegNotifyChangeKeyValue(key, below, changes | kForAllThreads, event, TRUE) ==
               ERROR_SUCCESS ||
           RegNotifyChangeKeyValue(key, below, changes, event, TRUE) == ERROR_SUCCESS;
}

// The path of every key on the way, the shortest first, and the path itself.
std::vector<std::string> KeysOnTheWay(const std::string& path) {
    std::vector<std::string> keys = {path};
    for (;;) {
        std::string parent = ParentFolderKeepSlash(keys.front());
        if (parent == keys.front()) return keys;
        keys.insert(keys.begin(), std::move(parent));
    }
}

}  // namespace

bool RegistryWatch::Add(HKEY root, const std::string& path) {
    bool isReported = false;
    for (const std::string& key : KeysOnTheWay(path)) {
        const bool isLast = key == path;
        const Outcome outcome =
            !isLast && IsWatched(root, key) ? Outcome::kWatched : Watch(root, key, isLast);
        // The key above reports when a missing one comes.
        if (outcome != Outcome::kWatched) return outcome == Outcome::kMissing && isReported;
        isReported = true;
    }
    return true;
}

bool RegistryWatch::IsWatched(HKEY root, const std::string& path) const {
    return std::any_of(keys_.begin(), keys_.end(), [&](const Watched& watched) {
        return watched.root == root && watched.path == path;
    });
}

RegistryWatch::Outcome RegistryWatch::Watch(HKEY root, const std::string& path,
                                            bool everythingBelow) {
    if (keys_.size() == MAXIMUM_WAIT_OBJECTS) return Outcome::kRefused;
    HKEY opened = nullptr;
    const LSTATUS status = RegOpenKeyExA(root, path.c_str(), 0, KEY_NOTIFY, &opened);
    UniqueHkey key(status == ERROR_SUCCESS ? opened : nullptr);
    if (status == ERROR_FILE_NOT_FOUND || status == ERROR_PATH_NOT_FOUND) return Outcome::kMissing;
    UniqueHandle event(CreateEventA(nullptr, TRUE, FALSE, nullptr));
    if (!key || !event || !Notify(key.get(), event.get(), everythingBelow)) {
        return Outcome::kRefused;
    }
    events_.push_back(event.get());
    keys_.push_back({root, path, std::move(event), std::move(key)});
    return Outcome::kWatched;
}

bool RegistryWatch::HasChanged() const {
    return WaitForMultipleObjects(static_cast<DWORD>(events_.size()), events_.data(), FALSE, 0) !=
           WAIT_TIMEOUT;
}

HiveMark MarkOf(HKEY hive) {
    HiveMark mark;
    mark.isKnown =
        RegQueryInfoKeyA(hive, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr,
                         nullptr, nullptr, nullptr, &mark.written) == ERROR_SUCCESS;
    return mark;
}

}  // namespace depot
