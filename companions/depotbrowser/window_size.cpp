#include "depotbrowser/window_size.h"

#include "depotbrowser/dialog_template.h"
#include "platform/registry_key.h"

namespace depot {
namespace {

constexpr int kUnitsPerInch = 96;
constexpr DWORD kLargestSide = 32000;

void Write(const char* name, int pixels) {
    const auto units = static_cast<DWORD>(MulDiv(pixels, kUnitsPerInch, PixelsPerInch()));
    RegSetKeyValueA(HKEY_CURRENT_USER, kBrowserKey, name, REG_DWORD, &units, sizeof(units));
}

int Pixels(DWORD units) {
    return MulDiv(static_cast<int>(units), PixelsPerInch(), kUnitsPerInch);
}

}  // namespace

std::optional<SIZE> RememberedSize() {
    const auto key = RegistryKey::Open(HKEY_CURRENT_USER, kBrowserKey);
    if (!key) return std::nullopt;
    const auto width = key->ReadDword(kWidthValue);
    const auto height = key->ReadDword(kHeightValue);
    if (!width || !height || *width > kLargestSide || *height > kLargestSide) return std::nullopt;
    return SIZE{Pixels(*width), Pixels(*height)};
}

void RememberSize(SIZE size) {
    Write(kWidthValue, size.cx);
    Write(kHeightValue, size.cy);
}

}  // namespace depot
