#include "depotbrowser/depot_search.h"

#include "depotbrowser/browse_ids.h"
#include "depotbrowser/depot_listing.h"
#include "depotbrowser/dialog_template.h"
#include "resource_ids.h"

namespace depot {
namespace {

// A word is typed without a pause of this length.
constexpr UINT kPauseMilliseconds = 300;

constexpr std::size_t kMostFound = 10000;

}  // namespace

void DepotSearch::TextChanged() {
    const SearchWords words(FoldedName(TextOf(GetDlgItem(parts_.dialog, CONTROL_SEARCH))));
    if (words == words_) return;
    words_ = words;
    Begin();
}

// What is known is shown at once; the rest after a pause.
void DepotSearch::Begin() {
    Stop();
    parts_.list.Search(words_);
    shown_();
    if (!parts_.navigator.IsLoaded()) return;
    if (!IsActive()) return parts_.navigator.ShowEmptiness();
    parts_.status.Clear();
    SetTimer(parts_.dialog, kPauseTimer, kPauseMilliseconds, nullptr);
}

void DepotSearch::Stop() {
    ++*newest_;
    found_ = 0;
    KillTimer(parts_.dialog, kPauseTimer);
}

void DepotSearch::TimerElapsed() {
    KillTimer(parts_.dialog, kPauseTimer);
    if (!IsActive() || !parts_.navigator.IsLoaded()) return;
    parts_.navigator.ShowAsBusy(IDS_BROWSE_SEARCHING);
    Continue({});
}

void DepotSearch::Continue(WalkState state) {
    const FolderRef folder = *parts_.navigator.Current();
    const unsigned number = *newest_;
    const WalkRequest request = {folder.depot, words_, folder.relative,
                                 [number, newest = newest_] { return number == *newest; }};
    parts_.navigator.RunQuietly(
        folder.depot,
        [request, state = std::move(state)](DepotSession& session) {
            return WalkOn(session, request, state);
        },
        [this, number](const WalkState& next) {
            if (number == *newest_) Show(next);
        });
}

void DepotSearch::Show(const WalkState& state) {
    found_ += state.found.size();
    parts_.list.AppendFound(state.found);
    shown_();
    const bool atEnd = state.open.empty() || found_ >= kMostFound || !state.succeeded;
    if (atEnd) return ShowEnd(state);
    WalkState next = state;
    next.found.clear();
    Continue(std::move(next));
}

void DepotSearch::ShowEnd(const WalkState& state) {
    const BrowseTexts& texts = parts_.texts;
    if (found_ >= kMostFound) {
        return parts_.status.ShowMessage(
            texts.Text(IDS_BROWSE_SEARCH_LIMIT, std::to_wstring(parts_.list.RowCount())));
    }
    std::wstring message;
    if (parts_.list.RowCount() == 0) {
        const std::wstring typed = TextOf(GetDlgItem(parts_.dialog, CONTROL_SEARCH));
        message = texts.Text(IDS_BROWSE_NOTHING_FOUND, typed);
    }
    if (state.unreadable != 0) {
        if (!message.empty()) message += L"\n";
        message += texts.Text(IDS_BROWSE_SEARCH_PARTLY, std::to_wstring(state.unreadable));
    }
    parts_.status.ShowMessage(message);
}

void DepotSearch::FolderChanged() {
    const auto& current = parts_.navigator.Current();
    const bool loaded = parts_.navigator.IsLoaded();
    if (current != folder_) {
        folder_ = current;
        Clear();
    } else if (loaded && !wasLoaded_ && IsActive()) {
        Begin();
    } else if (!loaded) {
        Stop();
    }
    wasLoaded_ = loaded;
}

bool DepotSearch::Clear() {
    if (!IsActive() && TextOf(GetDlgItem(parts_.dialog, CONTROL_SEARCH)).empty()) return false;
    SetDlgItemTextW(parts_.dialog, CONTROL_SEARCH, L"");
    TextChanged();
    return true;
}

}  // namespace depot
