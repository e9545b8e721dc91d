#include "depotbrowser/browse_memory.h"

#include "depotbrowser/column_widths.h"
#include "platform/program_name.h"
#include "platform/registry_key.h"
#include "platform/text.h"
#include "platform/wide_text.h"

namespace depot {
namespace {

constexpr char kBrowserKey[] = "Software\\Quillon\\Farrow\\13.00\\DepotBrowser";
constexpr char kFoldersKey[] = "Software\\Quillon\\Farrow\\13.00\\DepotBrowser\\Folders";

constexpr char kWidth[] = "Width";
constexpr char kHeight[] = "Height";
constexpr char kLeft[] = "Left";
constexpr char kTop[] = "Top";
constexpr char kColumnWidths[] = "Columns";
constexpr char kSortColumn[] = "SortColumn";
constexpr char kSortDescending[] = "SortDescending";

constexpr int kUnitsPerInch = 96;
constexpr DWORD kLargestSide = 32000;
constexpr DWORD kLongestPath = 1024;

std::optional<DWORD> ReadNumber(const char* name) {
    const auto key = RegistryKey::Open(HKEY_CURRENT_USER, kBrowserKey);
    return key ? key->ReadDword(name) : std::nullopt;
}

void WriteNumber(const char* name, DWORD value) {
    RegSetKeyValueA(HKEY_CURRENT_USER, kBrowserKey, name, REG_DWORD, &value, sizeof(value));
}

void WriteText(const char* key, const std::string& name, const std::string& text) {
    RegSetKeyValueA(HKEY_CURRENT_USER, key, name.c_str(), REG_SZ, text.c_str(),
                    static_cast<DWORD>(text.size() + 1));
}

// One program's folder for one type of file.
std::string FolderValue(std::int32_t fileType) {
    const ProgramName program;
    return ToLower(AnsiFromWide(program.Get())) + "|" + std::to_string(fileType);
}

}  // namespace

std::optional<SIZE> BrowseMemory::Size(int pixelsPerInch) const {
    if (!on_) return std::nullopt;
    const auto width = ReadNumber(kWidth), height = ReadNumber(kHeight);
    if (!width || !height || *width > kLargestSide || *height > kLargestSide) return std::nullopt;
    return SIZE{MulDiv(static_cast<int>(*width), pixelsPerInch, kUnitsPerInch),
                MulDiv(static_cast<int>(*height), pixelsPerInch, kUnitsPerInch)};
}

std::optional<POINT> BrowseMemory::Position() const {
    if (!on_) return std::nullopt;
    const auto left = ReadNumber(kLeft), top = ReadNumber(kTop);
    if (!left || !top) return std::nullopt;
    // Screens may lie left of and above the first one.
    const POINT corner = {static_cast<LONG>(*left), static_cast<LONG>(*top)};
    const auto isPlace = [](LONG at) {
        return at >= -LONG{kLargestSide} && at <= LONG{kLargestSide};
    };
    return isPlace(corner.x) && isPlace(corner.y) ? std::optional(corner) : std::nullopt;
}

void BrowseMemory::KeepPlace(const RECT& place, int pixelsPerInch) const {
    if (!on_) return;
    const auto units = [&](LONG pixels) {
        return static_cast<DWORD>(MulDiv(static_cast<int>(pixels), kUnitsPerInch, pixelsPerInch));
    };
    WriteNumber(kWidth, units(place.right - place.left));
    WriteNumber(kHeight, units(place.bottom - place.top));
    WriteNumber(kLeft, static_cast<DWORD>(place.left));
    WriteNumber(kTop, static_cast<DWORD>(place.top));
}

std::vector<int> BrowseMemory::Columns(int pixelsPerInch) const {
    if (!on_) return {};
    const auto key = RegistryKey::Open(HKEY_CURRENT_USER, kBrowserKey);
    const auto text = key ? key->ReadString(kColumnWidths) : std::nullopt;
    std::vector<int> widths = ParseColumnWidths(text.value_or(std::string()), kColumns);
    for (int& width : widths) width = MulDiv(width, pixelsPerInch, kUnitsPerInch);
    return widths;
}

void BrowseMemory::KeepColumns(const std::vector<int>& pixels, int pixelsPerInch) const {
    if (!on_) return;
    std::vector<int> units = pixels;
    for (int& width : units) width = MulDiv(width, kUnitsPerInch, pixelsPerInch);
    WriteText(kBrowserKey, kColumnWidths, ColumnWidthsText(units));
}

std::optional<EntryOrder> BrowseMemory::Order() const {
    const auto column = on_ ? ReadNumber(kSortColumn) : std::nullopt;
    if (!column || *column >= kColumns) return std::nullopt;
    return EntryOrder{ColumnOf(static_cast<long>(*column)),
                      ReadNumber(kSortDescending).value_or(0) != 0};
}

void BrowseMemory::KeepOrder(EntryOrder order) const {
    if (!on_ || order.column == Column::kFolder) return;
    WriteNumber(kSortColumn, static_cast<DWORD>(order.column));
    WriteNumber(kSortDescending, order.descending ? 1 : 0);
}

std::string BrowseMemory::Folder(std::int32_t fileType) const {
    const auto key = on_ ? RegistryKey::Open(HKEY_CURRENT_USER, kFoldersKey) : std::nullopt;
    return key ? key->ReadString(FolderValue(fileType), kLongestPath).value_or(std::string())
               : std::string();
}

void BrowseMemory::KeepFolder(std::int32_t fileType, const std::string& displayPath) const {
    if (on_ && displayPath.size() < kLongestPath) {
        WriteText(kFoldersKey, FolderValue(fileType), displayPath);
    }
}

}  // namespace depot
