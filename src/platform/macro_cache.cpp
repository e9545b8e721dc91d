#include "platform/macro_cache.h"

#include <algorithm>
#include <cstring>

namespace depot {
namespace {

constexpr char kGenericBlockPrefix[] = "Quillon - Generic - Replacers - ";

}  // namespace

std::string SlotText(const MacroSlot& slot) {
    return std::string(slot, strnlen(slot, sizeof(slot)));
}

void FillSlot(MacroSlot& slot, const std::string& text) {
    std::memset(slot, 0, sizeof(slot));
    std::memcpy(slot, text.data(), std::min(text.size(), sizeof(slot) - 1));
}

MacroCacheHolder::MacroCacheHolder(std::uint32_t shared, const std::string& name)
    : shared_(shared) {
    if (shared_ == 0) return;
    const std::string blockName = name.empty() ? ProcessBlockName(kGenericBlockPrefix) : name;
    OpenSharedBlock(blockName.c_str(), sizeof(MacroValues), handle_, view_);
    if (view_) data_ = static_cast<MacroValues*>(view_.get());
}

}  // namespace depot
