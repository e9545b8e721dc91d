#include "platform/macro_cache.h"

#include <cstring>
#include <string_view>

#include "platform/code_page.h"

namespace depot {
namespace {

constexpr char kGenericBlockPrefix[] = "Quillon - Generic - Replacers - ";

}  // namespace

std::string SlotText(const MacroSlot& slot) {
    return std::string(slot, strnlen(slot, sizeof(slot)));
}

void FillSlot(MacroSlot& slot, const std::string& text) {
    std::memset(slot, 0, sizeof(slot));
    const std::string_view fits = CutToBytes(text, sizeof(slot) - 1);
    std::memcpy(slot, fits.data(), fits.size());
}

MacroCacheHolder::MacroCacheHolder(std::uint32_t shared, const std::string& name)
    : shared_(shared) {
    if (shared_ == 0) return;
    const std::string blockName = name.empty() ? ProcessBlockName(kGenericBlockPrefix) : name;
    OpenSharedBlock(blockName.c_str(), sizeof(MacroValues), handle_, view_);
    if (view_) data_ = static_cast<MacroValues*>(view_.get());
}

}  // namespace depot
