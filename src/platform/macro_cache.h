// The holder of the values that path macros expand to, shared by the modules of one process.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>

#include "platform/not_copied.h"
#include "platform/shared_block.h"

namespace depot {

// The bytes of one slot of the cache, its terminating NUL included.
inline constexpr std::size_t kMacroSlotBytes = 520;

using MacroSlot = char[kMacroSlotBytes];

// The layout of the cache, which every module that opens it must agree on. Each slot holds one
// NUL-terminated text.
struct MacroValues {
    MacroSlot applicationFolder;
    MacroSlot applicationFolderX86;
    MacroSlot organization;
    MacroSlot userFolder;
    MacroSlot profileFolder;
    MacroSlot languageCode;  // without a leading dot
    MacroSlot transferUserName;
};
static_assert(sizeof(MacroValues) == 3640);
static_assert(offsetof(MacroValues, applicationFolderX86) == 520);
static_assert(offsetof(MacroValues, organization) == 1040);
static_assert(offsetof(MacroValues, userFolder) == 1560);
static_assert(offsetof(MacroValues, profileFolder) == 2080);
static_assert(offsetof(MacroValues, languageCode) == 2600);
static_assert(offsetof(MacroValues, transferUserName) == 3120);

// Returns the text of a slot. It ends within the slot also when another module left no NUL there.
std::string SlotText(const MacroSlot& slot);

// Fills the slot with the text, cut to the slot, and with zeros after it. A slot that holds the
// text already is not written, and one that is changed is empty at no moment in between.
void FillSlot(MacroSlot& slot, const std::string& text);

// Owns the values, or one view of the block that holds them. The values in use may lie
// inside the object.
class MacroCacheHolder : NotCopied {
public:
    // With `shared` 0 the values are this object's own. Else they lie in the block of that name, or
    // for an empty name in the process's generic one; without a block they are this object's own.
    MacroCacheHolder(std::uint32_t shared, const std::string& name);

    // The values in use; never null. Other threads may change them at any moment.
    MacroValues* Data() const { return data_; }

    // Returns the values as they are between two changes of this module.
    MacroValues Copy() const;

    // Has `change` work on the values while no thread of this module copies or changes any.
    void Change(const std::function<void(MacroValues& values)>& change);

private:
    MacroValues inline_ = {};
    MacroValues* data_ = &inline_;
    UniqueHandle handle_;  // outlives the view
    UniqueView view_;
    std::uint32_t shared_;
};

}  // namespace depot
