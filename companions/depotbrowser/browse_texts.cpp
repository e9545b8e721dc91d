#include "depotbrowser/browse_texts.h"

#include "config/file_types.h"
#include "depotbrowser/column_text.h"
#include "depotbrowser/prompt_text.h"
#include "platform/win32.h"
#include "resource_ids.h"
#include "texts/resource_library.h"

namespace depot {
namespace {

std::wstring UserSetting(LCTYPE setting) {
    constexpr int kLongest = 80;
    wchar_t text[kLongest] = {};
    GetLocaleInfoW(LOCALE_USER_DEFAULT, setting, text, kLongest);
    return text;
}

}  // namespace

BrowseTexts::BrowseTexts(const std::string& folder)
    : library_(folder.empty() ? nullptr : LoadResourceLibrary(folder + kResourceLibraryName)),
      groupSeparator_(UserSetting(LOCALE_STHOUSAND)) {}

std::wstring BrowseTexts::Text(UINT id) const {
    const std::wstring_view text = LibraryText(library_.get(), id);
    return text.empty() ? PromptText(id) : std::wstring(text);
}

std::wstring BrowseTexts::Text(UINT id, const std::wstring& argument) const {
    return FillIn(Text(id), argument);
}

std::wstring BrowseTexts::TypeName(const BrowseEntry& entry) const {
    if (entry.isFolder) return Text(IDS_BROWSE_FOLDER);
    switch (entry.fileType) {
        case kSkeinProfile:
            return Text(IDS_BROWSE_SKEIN_FILE);
        case kKickoffProfile:
            return Text(IDS_BROWSE_KICKOFF_FILE);
        case kSessionProfile:
            return Text(IDS_BROWSE_SESSION_FILE);
        default:
            return Text(IDS_BROWSE_OTHER_FILE, ExtensionLabel(entry.shownName));
    }
}

std::wstring BrowseTexts::SizeText(const BrowseEntry& entry) const {
    if (!entry.hasDetails || entry.isFolder) return {};
    return Text(IDS_BROWSE_KILOBYTES, GroupedNumber(Kilobytes(entry.size), groupSeparator_));
}

std::wstring BrowseTexts::DateText(const BrowseEntry& entry) {
    if (!entry.hasDetails) return {};
    const FILETIME changed = {static_cast<DWORD>(entry.date), static_cast<DWORD>(entry.date >> 32)};
    SYSTEMTIME universal = {}, local = {};
    if (!FileTimeToSystemTime(&changed, &universal) ||
        !SystemTimeToTzSpecificLocalTime(nullptr, &universal, &local)) {
        return {};
    }
    constexpr int kLongest = 80;
    wchar_t date[kLongest] = {}, time[kLongest] = {};
    GetDateFormatW(LOCALE_USER_DEFAULT, DATE_SHORTDATE, &local, nullptr, date, kLongest);
    GetTimeFormatW(LOCALE_USER_DEFAULT, TIME_NOSECONDS, &local, nullptr, time, kLongest);
    return std::wstring(date) + L" " + time;
}

}  // namespace depot
