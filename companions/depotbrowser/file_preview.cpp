#include "depotbrowser/file_preview.h"

#include "config/text_encoding.h"
#include "depotbrowser/browse_ids.h"
#include "depotbrowser/depot_listing.h"
#include "depotbrowser/dialog_template.h"
#include "depotbrowser/label_text.h"
#include "manager/display_path.h"
#include "platform/wide_text.h"
#include "resource_ids.h"

namespace depot {
namespace {

constexpr UINT kPauseMilliseconds = 250;

constexpr std::uint64_t kLargestProfile = 4 << 20;

}  // namespace

FileDetails ExamineFile(DepotSession& session, const FolderRef& folder, const BrowseEntry& entry) {
    FileDetails details;
    CDepot* const depot = FindDepot(session.Depots(), folder.depot);
    if (depot == nullptr) return details;
    details.size = entry.size;
    details.succeeded = entry.isFolder || entry.size > kLargestProfile;
    if (details.succeeded) return details;
    const StorePath place = PlaceOf(*depot, BuildDisplayPath(*depot, folder.relative + entry.name,
                                                             PathForm::kDisplay, DepotName::kKey));
    const StoreScope scope(*place.store);
    FileBuffer file;
    const Result read =
        scope ? place.store->ReadFile(place.path, SourceFate::kStays, file) : scope.Outcome();
    details.succeeded = static_cast<bool>(read);
    if (!read) {
        details.reason = ReasonOf(read);
        return details;
    }
    details.size = file.length;
    const auto text = TextFromBytes({reinterpret_cast<const char*>(file.bytes.get()), file.length});
    if (text) details.summary = SummaryOf(*text);
    return details;
}

const BrowseEntry* FilePreview::OnlySelected() const {
    const auto selected = parts_.list.Selected();
    return selected.size() == 1 ? selected.front() : nullptr;
}

void FilePreview::SelectionChanged() {
    ++newest_;
    KillTimer(parts_.dialog, kPauseTimer);
    const BrowseEntry* const entry = OnlySelected();
    if (entry == nullptr || entry->isFolder) return ShowLine({});
    SetTimer(parts_.dialog, kPauseTimer, kPauseMilliseconds, nullptr);
}

void FilePreview::TimerElapsed() {
    KillTimer(parts_.dialog, kPauseTimer);
    const BrowseEntry* const selected = OnlySelected();
    if (selected == nullptr || !parts_.navigator.IsLoaded()) return;
    const FolderRef folder = parts_.navigator.FolderOf(*selected);
    parts_.navigator.RunQuietly(
        folder.depot,
        [folder, entry = *selected](DepotSession& session) {
            return ExamineFile(session, folder, entry);
        },
        [this, number = newest_, entry = *selected](const FileDetails& details) {
            if (number == newest_) ShowLine(Line(entry, details, L"   "));
        });
}

std::wstring FilePreview::Line(const BrowseEntry& entry, const FileDetails& details,
                               const std::wstring& between) const {
    const BrowseTexts& texts = parts_.texts;
    std::wstring line;
    const auto add = [&](const std::wstring& text) {
        if (!text.empty()) line += (line.empty() ? L"" : between) + text;
    };
    const ProfileSummary& summary = details.summary;
    if (!summary.title.empty()) add(texts.Text(IDS_BROWSE_PROFILE_TITLE, summary.title));
    if (!summary.host.empty()) add(texts.Text(IDS_BROWSE_PROFILE_HOST, summary.host));
    add(entry.typeName);
    BrowseEntry measured = entry;
    // A listing of a directory says nothing of sizes; what was read has one.
    measured.hasDetails = details.succeeded;
    measured.size = details.size;
    add(texts.SizeText(measured));
    add(BrowseTexts::DateText(entry));
    return line;
}

void FilePreview::ShowLine(const std::wstring& text) {
    if (TextOf(GetDlgItem(parts_.dialog, CONTROL_DETAILS)) == text) return;
    SetDlgItemTextW(parts_.dialog, CONTROL_DETAILS, text.c_str());
}

void FilePreview::ShowProperties() {
    const BrowseEntry* const selected = OnlySelected();
    if (selected == nullptr || !parts_.navigator.IsLoaded()) return;
    const FolderRef folder = parts_.navigator.FolderOf(*selected);
    parts_.navigator.Run(
        folder.depot, IDS_BROWSE_WORKING,
        [folder, entry = *selected](DepotSession& session) {
            return ExamineFile(session, folder, entry);
        },
        [this, entry = *selected, path = parts_.navigator.PathOf(*selected)](
            const FileDetails& details) { ShowBox(entry, path, details); });
}

void FilePreview::ShowBox(const BrowseEntry& entry, const std::string& path,
                          const FileDetails& details) {
    std::wstring text = WideFromAnsi(path) + L"\n\n" + Line(entry, details, L"\n");
    if (!details.reason.empty()) text += L"\n\n" + WideFromAnsi(details.reason);
    const std::wstring title = WithoutAccessKey(parts_.texts.Text(IDS_BROWSE_PROPERTIES));
    MessageBoxW(parts_.dialog, text.c_str(), title.c_str(),
                MB_OK | (details.succeeded ? MB_ICONINFORMATION : MB_ICONWARNING));
}

}  // namespace depot
