#include "depotbrowser/browse_icons.h"

#include <cstring>

#include "config/file_types.h"
#include "depotbrowser/icon_location.h"
#include "depotbrowser/icon_pixels.h"
#include "model/depot.h"
#include "platform/environment.h"
#include "platform/paths.h"
// After the Windows headers.
#include <shlwapi.h>

namespace depot {
namespace {

constexpr int kExpectedIcons = 8;

struct BitmapDeleter {
    void operator()(HBITMAP bitmap) const { DeleteObject(bitmap); }
};
using UniqueBitmap = std::unique_ptr<std::remove_pointer_t<HBITMAP>, BitmapDeleter>;

UniqueIcon OwnIconOf(OwnIcon which, int side) {
    const std::vector<std::uint32_t> pixels = IconPixels(which, side);
    BITMAPINFO info = {};
    info.bmiHeader.biSize = sizeof(info.bmiHeader);
    info.bmiHeader.biWidth = side;
    info.bmiHeader.biHeight = -side;  // from the top
    info.bmiHeader.biPlanes = 1;
    info.bmiHeader.biBitCount = 32;
    void* bits = nullptr;
    const UniqueBitmap colours(CreateDIBSection(nullptr, &info, DIB_RGB_COLORS, &bits, nullptr, 0));
    const UniqueBitmap mask(CreateBitmap(side, side, 1, 1, nullptr));
    if (!colours || !mask || pixels.empty()) return {};
    std::memcpy(bits, pixels.data(), pixels.size() * sizeof(pixels.front()));
    ICONINFO icon = {TRUE, 0, 0, mask.get(), colours.get()};
    return UniqueIcon(CreateIconIndirect(&icon));
}

UniqueIcon IconOf(const IconLocation& location, int side) {
    HICON icon = nullptr;
    if (!location.file.empty() && location.file.size() < kMaxPathBytes) {
        PrivateExtractIconsA(location.file.c_str(), location.index, side, side, &icon, nullptr, 1,
                             0);
    }
    return UniqueIcon(icon);
}

// The icon that the system shows for profile files; empty where none is configured.
IconLocation IconOfProfiles() {
    char location[kMaxPathBytes] = {};
    DWORD size = sizeof(location);
    const HRESULT found =
        AssocQueryStringA(ASSOCF_INIT_IGNOREUNKNOWN, ASSOCSTR_DEFAULTICON,
                          ExtensionForType(kSkeinProfile).c_str(), nullptr, location, &size);
    return found == S_OK ? ParseIconLocation(ExpandEnvironment(location)) : IconLocation();
}

}  // namespace

BrowseIcons::BrowseIcons() {
    Make(GetSystemMetrics(SM_CXSMICON));
}

void BrowseIcons::Make(int side) {
    before_ = std::move(list_);
    list_.reset(
        ImageList_Create(side, side, ILC_COLOR32 | ILC_MASK, kExpectedIcons, kExpectedIcons));
    side_ = side;
    folder_ = Add(OwnIconOf(OwnIcon::kFolder, side).get(), 0);
    file_ = Add(OwnIconOf(OwnIcon::kFile, side).get(), folder_);
    file_ = Add(IconOf(IconOfProfiles(), side).get(), file_);
    depot_ = Add(OwnIconOf(OwnIcon::kDepot, side).get(), folder_);
}

void BrowseIcons::Resize(int side) {
    Make(side);
    for (const std::string& location : locations_) AddDepot(location);
}

int BrowseIcons::Depot(const std::string& location) {
    locations_.push_back(location);
    return AddDepot(location);
}

int BrowseIcons::AddDepot(const std::string& location) {
    return Add(IconOf(ParseIconLocation(ExpandEnvironment(location)), side_).get(), depot_);
}

int BrowseIcons::Add(HICON icon, int otherwise) {
    const int index = icon != nullptr ? ImageList_ReplaceIcon(list_.get(), -1, icon) : -1;
    return index >= 0 ? index : otherwise;
}

}  // namespace depot
