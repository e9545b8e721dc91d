#include "depotbrowser/browse_icons.h"

#include "depotbrowser/icon_location.h"
#include "model/depot.h"
#include "platform/environment.h"
// After the Windows headers.
#include <shellapi.h>

namespace depot {
namespace {

constexpr int kExpectedIcons = 8;

// The library whose icons the shell shows, and the number of its icon for a volume.
constexpr char kShellIcons[] = "shell32.dll";
constexpr int kVolumeIcon = 8;

UniqueIcon ShellIcon(const char* name, DWORD attributes, bool large) {
    SHFILEINFOA info = {};
    SHGetFileInfoA(name, attributes, &info, sizeof(info),
                   static_cast<UINT>(SHGFI_ICON | SHGFI_USEFILEATTRIBUTES |
                                     (large ? SHGFI_LARGEICON : SHGFI_SMALLICON)));
    return UniqueIcon(info.hIcon);
}

UniqueIcon IconOf(const IconLocation& location, bool large) {
    HICON icon = nullptr;
    if (!location.file.empty()) {
        ExtractIconExA(location.file.c_str(), location.index, large ? &icon : nullptr,
                       large ? nullptr : &icon, 1);
    }
    return UniqueIcon(icon);
}

}  // namespace

BrowseIcons::BrowseIcons() {
    Make(GetSystemMetrics(SM_CXSMICON));
}

void BrowseIcons::Make(int side) {
    before_ = std::move(list_);
    list_.reset(
        ImageList_Create(side, side, ILC_COLOR32 | ILC_MASK, kExpectedIcons, kExpectedIcons));
    large_ = side > GetSystemMetrics(SM_CXSMICON);
    folder_ = Add(ShellIcon("folder", FILE_ATTRIBUTE_DIRECTORY, large_).get(), 0);
    file_ = Add(ShellIcon("file.kra", FILE_ATTRIBUTE_NORMAL, large_).get(), folder_);
    depot_ = Add(IconOf({kShellIcons, kVolumeIcon}, large_).get(), folder_);
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
    return Add(IconOf(ParseIconLocation(ExpandEnvironment(location)), large_).get(), depot_);
}

int BrowseIcons::Add(HICON icon, int otherwise) {
    const int index = icon != nullptr ? ImageList_ReplaceIcon(list_.get(), -1, icon) : -1;
    return index >= 0 ? index : otherwise;
}

}  // namespace depot
