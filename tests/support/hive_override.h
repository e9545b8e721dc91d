// A predefined registry key that is empty for this process, for tests of keys that others own.
#pragma once

#include <string>

#include "platform/registry_key.h"

namespace depot::test {

// Sends everything that this process does below `root` into a scratch key while it lives, so that
// the real key is neither seen nor changed.
class HiveOverride {
public:
    explicit HiveOverride(HKEY root) : root_(root) {
        RegDeleteTreeA(HKEY_CURRENT_USER, kScratch);
        HKEY scratch = nullptr;
        RegCreateKeyA(HKEY_CURRENT_USER, kScratch, &scratch);
        const UniqueHkey owner(scratch);
        RegOverridePredefKey(root_, scratch);
    }
    ~HiveOverride() {
        RegOverridePredefKey(root_, nullptr);
        RegDeleteTreeA(HKEY_CURRENT_USER, kScratch);
    }
    HiveOverride(const HiveOverride&) = delete;
    HiveOverride& operator=(const HiveOverride&) = delete;

private:
    static constexpr char kScratch[] = "Software\\DepotTests\\Hive";

    HKEY root_;
};

}  // namespace depot::test
