#include "platform/macro_cache.h"

#include <cstring>
#include <string_view>

#include "platform/code_page.h"
#include "platform/win32.h"

namespace depot {
namespace {

constexpr char kGenericBlockPrefix[] = "Quillon - Generic - Replacers - ";

// One for all holders of this module: their views show one block at several addresses.
SRWLOCK valuesLock = SRWLOCK_INIT;

class ReadingScope : NotCopied {
public:
    ReadingScope() { AcquireSRWLockShared(&valuesLock); }
    ~ReadingScope() { ReleaseSRWLockShared(&valuesLock); }
};

class WritingScope : NotCopied {
public:
    WritingScope() { AcquireSRWLockExclusive(&valuesLock); }
    ~WritingScope() { ReleaseSRWLockExclusive(&valuesLock); }
};

}  // namespace

std::string SlotText(const MacroSlot& slot) {
    return std::string(slot, strnlen(slot, sizeof(slot)));
}

void FillSlot(MacroSlot& slot, const std::string& text) {
    MacroSlot filled = {};
    const std::string_view fits = CutToBytes(text, sizeof(filled) - 1);
    std::memcpy(filled, fits.data(), fits.size());
    if (std::strncmp(slot, filled, sizeof(slot)) != 0) std::memcpy(slot, filled, sizeof(slot));
}

MacroCacheHolder::MacroCacheHolder(std::uint32_t shared, const std::string& name)
    : shared_(shared) {
    if (shared_ == 0) return;
    const std::string blockName = name.empty() ? ProcessBlockName(kGenericBlockPrefix) : name;
    OpenSharedBlock(blockName.c_str(), sizeof(MacroValues), handle_, view_);
    if (view_) data_ = static_cast<MacroValues*>(view_.get());
}

MacroValues MacroCacheHolder::Copy() const {
    const ReadingScope reading;
    return *data_;
}

void MacroCacheHolder::Change(const std::function<void(MacroValues& values)>& change) {
    const WritingScope writing;
    change(*data_);
}

}  // namespace depot
