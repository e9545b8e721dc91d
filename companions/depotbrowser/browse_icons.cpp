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

UniqueIcon ShellIcon(const char* name, DWORD attributes) {
    SHFILEINFOA info = {};
    SHGetFileInfoA(name, attributes, &info, sizeof(info),
                   SHGFI_ICON | SHGFI_SMALLICON | SHGFI_USEFILEATTRIBUTES);
    return UniqueIcon(info.hIcon);
}

UniqueIcon IconOf(const IconLocation& location) {
    HICON icon = nullptr;
    if (!location.file.empty()) {
        ExtractIconExA(location.file.c_str(), location.index, nullptr, &icon, 1);
    }
    return UniqueIcon(icon);
}

}  // namespace

BrowseIcons::BrowseIcons()
    : list_(ImageList_Create(GetSystemMetrics(SM_CXSMICON), GetSystemMetrics(SM_CYSMICON),
                             ILC_COLOR32 | ILC_MASK, kExpectedIcons, kExpectedIcons)) {
    folder_ = Add(ShellIcon("folder", FILE_ATTRIBUTE_DIRECTORY).get(), 0);
    file_ = Add(ShellIcon("file.kra", FILE_ATTRIBUTE_NORMAL).get(), folder_);
    depot_ = Add(IconOf({kShellIcons, kVolumeIcon}).get(), folder_);
}

int BrowseIcons::Depot(const std::string& location) {
    return Add(IconOf(ParseIconLocation(ExpandEnvironment(location))).get(), depot_);
}

int BrowseIcons::Add(HICON icon, int otherwise) {
    const int index = icon != nullptr ? ImageList_ReplaceIcon(list_.get(), -1, icon) : -1;
    return index >= 0 ? index : otherwise;
}

}  // namespace depot
