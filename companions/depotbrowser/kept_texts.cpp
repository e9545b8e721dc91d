#include "depotbrowser/kept_texts.h"

#include <algorithm>
#include <cwchar>
#include <cwctype>

#include "depotbrowser/folder_navigator.h"
#include "depotbrowser/label_text.h"
#include "directory/ldap_result.h"
#include "platform/file_time.h"
#include "platform/paths.h"
#include "platform/wide_text.h"
#include "resource_ids.h"
// After the Windows headers.
#include <commdlg.h>

namespace depot {
namespace {

// A record says what it wants to.
constexpr std::size_t kLongestReason = 500;
constexpr std::size_t kMostConflicts = 10;

// What comes from a record, on one line.
std::wstring OneLine(const std::string& utf8) {
    std::wstring text = WideFromUtf8(utf8);
    if (text.size() > kLongestReason) text.erase(kLongestReason);
    std::replace_if(
        text.begin(), text.end(), [](wchar_t unit) { return std::iswcntrl(unit) != 0; }, L' ');
    return text;
}

std::wstring ReasonOfKeeping(const BrowseTexts& texts, const KeptCopy& copy) {
    if (copy.isWaiting) return texts.Text(IDS_KEPT_WAITS);
    if (!copy.origin) return {};
    if (copy.origin->code == kContentsChanged) return texts.Text(IDS_KEPT_OTHER_VERSION);
    if (!copy.origin->reason.empty()) return OneLine(copy.origin->reason);
    return copy.origin->code != 0 ? L"LDAP " + std::to_wstring(copy.origin->code) : std::wstring();
}

std::wstring DateOf(const KeptCopy& copy) {
    BrowseEntry entry;
    entry.hasDetails = true;
    entry.date = Joined(copy.time);
    return BrowseTexts::DateText(entry);
}

std::wstring Shown(const std::optional<std::string>& value) {
    return value ? WideFromUtf8(*value) : std::wstring();
}

}  // namespace

std::wstring NameOf(const KeptFile& file) {
    return WideFromUtf8(file.copy.name);
}

std::vector<std::wstring> KeptCells(const BrowseTexts& texts, const KeptFile& file) {
    return {NameOf(file), WideFromAnsi(file.entry), DateOf(file.copy),
            texts.Text(file.copy.isWaiting ? IDS_KEPT_WAITING : IDS_KEPT_RECOVERED),
            ReasonOfKeeping(texts, file.copy)};
}

std::vector<std::wstring> ValueCells(const KeptValue& value) {
    return {WideFromUtf8(value.section), WideFromUtf8(value.key), Shown(value.base),
            Shown(value.entry), Shown(value.ours)};
}

std::wstring KeptFailure(const BrowseTexts& texts, const KeptFile& file, const KeptResult& result) {
    const std::wstring entry = WideFromAnsi(file.entry);
    switch (result.outcome) {
        case KeptOutcome::kGone:
            return texts.Text(IDS_KEPT_GONE, entry);
        case KeptOutcome::kChangedNow:
            return texts.Text(IDS_KEPT_CHANGED, NameOf(file));
        case KeptOutcome::kCannotMerge:
            return texts.Text(IDS_KEPT_CANNOT_MERGE, NameOf(file));
        case KeptOutcome::kCopyStays:
            return WithReason(texts.Text(IDS_KEPT_STAYS, NameOf(file)), result.reason);
        default:
            return WithReason(texts.Text(IDS_KEPT_FAILED, NameOf(file)), result.reason);
    }
}

std::wstring ComparisonText(const BrowseTexts& texts, const KeptFile& file,
                            const KeptComparison& comparison) {
    if (!comparison.reason.empty() || comparison.outcome != KeptOutcome::kDone) {
        return WithReason(texts.Text(IDS_BROWSE_CANNOT_OPEN, WideFromAnsi(file.entry)),
                          comparison.reason);
    }
    if (!comparison.values) return texts.Text(IDS_KEPT_NO_PROFILE);
    return comparison.values->empty() ? texts.Text(IDS_KEPT_NO_DIFFERENCE) : std::wstring();
}

std::wstring ConflictNames(const std::vector<MergeConflict>& conflicts) {
    std::wstring names;
    for (std::size_t index = 0; index < std::min(conflicts.size(), kMostConflicts); ++index) {
        const MergeConflict& conflict = conflicts[index];
        if (index > 0) names += L", ";
        names += L"[" + OneLine(conflict.section) + L"] " + OneLine(conflict.key);
    }
    return conflicts.size() > kMostConflicts ? names + L", ..." : names;
}

std::wstring AskForCopy(HWND owner, const BrowseTexts& texts, const KeptFile& file) {
    constexpr DWORD kLongest = 1024;
    // What waits has the entry's name.
    std::wstring path = file.copy.isWaiting ? WideFromAnsi(NamePart(file.entry)) : NameOf(file);
    // A directory takes more characters than a file system.
    std::replace_if(
        path.begin(), path.end(),
        [](wchar_t unit) { return std::wcschr(L"\\/:*?\"<>|", unit) != nullptr; }, L'_');
    path.erase(std::min<std::size_t>(path.size(), kLongest - 1));
    path.append(kLongest - path.size(), L'\0');
    std::wstring filter = texts.Text(IDS_BROWSE_ALL_FILES);
    filter += std::wstring(L"\0*.*\0", 5);
    const std::wstring title = WithoutAccessKey(texts.Text(IDS_KEPT_EXPORT));
    OPENFILENAMEW request = {};
    request.lStructSize = sizeof(request);
    request.hwndOwner = owner;
    request.lpstrFilter = filter.c_str();
    request.lpstrFile = path.data();
    request.nMaxFile = kLongest;
    request.lpstrTitle = title.c_str();
    request.Flags = OFN_OVERWRITEPROMPT | OFN_PATHMUSTEXIST | OFN_NOCHANGEDIR | OFN_HIDEREADONLY |
                    OFN_NOREADONLYRETURN | OFN_EXPLORER;
    if (!GetSaveFileNameW(&request)) return {};
    path.resize(std::wcslen(path.c_str()));
    return path;
}

}  // namespace depot
