#include "depotbrowser/folder_navigator.h"

#include <algorithm>

#include "depotbrowser/column_text.h"
#include "depotbrowser/name_rules.h"
#include "platform/paths.h"
#include "platform/text.h"
#include "platform/wide_text.h"
#include "resource_ids.h"

namespace depot {

// No depot is called so: a name of a registry key holds no backslash.
const DepotRef FolderNavigator::kNoDepot = {"\\", HKEY_CURRENT_USER};

FolderNavigator::FolderNavigator(Parts parts) : parts_(std::move(parts)) {}

DepotWorker& FolderNavigator::Worker(const DepotRef& depot) {
    const auto found = std::find_if(workers_.begin(), workers_.end(),
                                    [&](const Placed& placed) { return placed.depot == depot; });
    if (found != workers_.end()) return *found->worker;
    workers_.push_back({depot, std::make_unique<DepotWorker>(parts_.mailbox)});
    return *workers_.back().worker;
}

unsigned FolderNavigator::Begin(const DepotRef& depot, UINT text) {
    busyDepot_ = depot;
    parts_.status.Clear();
    parts_.status.ShowBusy(parts_.texts.Text(text));
    return ++*newest_;
}

void FolderNavigator::Open(const FolderRef& folder, const AfterLoading& after) {
    if (current_ != folder) parts_.list.SetEntries({});
    current_ = folder;
    visited_.Visit(folder);
    loaded_ = false;
    parts_.tree.Select(folder);
    const unsigned ticket = Begin(folder.depot, IDS_BROWSE_LOADING);
    parts_.changed();
    Worker(folder.depot)
        .Post(
            [folder, ticket, newest = newest_](DepotSession& session) {
                return ticket == *newest ? ListForTree(session, folder) : Listing();
            },
            [this, folder, ticket, after](const Listing& listing) {
                if (listing.succeeded) ShowFolders(folder, listing);
                if (ticket == *newest_) Show(folder, listing, after);
            });
}

void FolderNavigator::Show(const FolderRef& folder, const Listing& listing,
                           const AfterLoading& after) {
    loaded_ = listing.succeeded;
    folderPath_ = listing.folderPath;
    parts_.list.SetEntries(listing.entries);
    if (!listing.succeeded) parts_.tree.SetFolders(folder, {}, false);
    restoring_ = after.restores;
    if (!after.select.empty()) parts_.list.Select(after.select);
    restoring_ = false;
    ShowOutcome(folder, listing, after.error);
    parts_.changed();
    if (loaded_ && after.then) after.then();
}

void FolderNavigator::ShowOutcome(const FolderRef& folder, const Listing& listing,
                                  const std::wstring& error) {
    if (!listing.succeeded) {
        const std::wstring shown = parts_.tree.ShownPath(folder);
        parts_.status.ShowError(
            WithReason(parts_.texts.Text(IDS_BROWSE_CANNOT_OPEN, shown), listing.reason));
    } else if (!error.empty()) {
        parts_.status.ShowError(error);
    } else {
        ShowEmptiness();
    }
}

void FolderNavigator::ShowEmptiness() {
    if (parts_.list.RowCount() != 0) return parts_.status.Clear();
    const std::size_t hidden = parts_.list.HiddenCount();
    if (hidden == 0) return parts_.status.ShowMessage(parts_.texts.Text(IDS_BROWSE_EMPTY));
    const std::wstring text =
        parts_.texts.Text(IDS_BROWSE_HIDDEN, WideFromAnsi(parts_.list.Pattern()));
    parts_.status.ShowMessage(FillIn(text, std::to_wstring(hidden)));
}

void FolderNavigator::ShowMatching(const std::string& pattern) {
    parts_.list.SetPattern(pattern);
    if (loaded_) ShowEmptiness();
}

void FolderNavigator::ShowFolders(const FolderRef& folder, const Listing& listing) {
    parts_.tree.SetFolders(folder, listing.folders, listing.succeeded);
}

void FolderNavigator::LoadFolders(const FolderRef& folder) {
    // The folder that is shown is being loaded anyway.
    if (current_ == folder) return;
    Worker(folder.depot)
        .Post([folder](DepotSession& session) { return ListForTree(session, folder); },
              [this, folder](const Listing& listing) { ShowFolders(folder, listing); });
}

void FolderNavigator::Reload(const AfterLoading& after) {
    if (current_) Open(FolderRef(*current_), after);
}

void FolderNavigator::OpenAbove() {
    if (!current_ || current_->relative.empty()) return;
    const std::string left = NamePart(RemoveTrailingBackslash(current_->relative));
    Open({current_->depot, FolderAbove(current_->relative)}, {left, {}, {}, true});
}

void FolderNavigator::OpenBack() {
    if (const auto folder = visited_.Back()) Open(*folder);
}

void FolderNavigator::OpenForward() {
    if (const auto folder = visited_.Forward()) Open(*folder);
}

FolderRef FolderNavigator::FolderOf(const BrowseEntry& entry) const {
    return entry.elsewhere ? FolderRef{current_->depot, *entry.elsewhere} : *current_;
}

std::string FolderNavigator::PathOf(const BrowseEntry& entry) const {
    const std::string depot = folderPath_.substr(0, folderPath_.size() - current_->relative.size());
    return depot + entry.elsewhere.value_or(current_->relative) + entry.name;
}

void FolderNavigator::ShowAsBusy(UINT text) {
    if (!current_) return;
    busyDepot_ = current_->depot;
    parts_.status.ShowBusy(parts_.texts.Text(text));
}

void FolderNavigator::Stop() {
    ++*newest_;
    std::erase_if(workers_, [&](const Placed& placed) { return placed.depot == busyDepot_; });
    parts_.status.ShowMessage(parts_.texts.Text(IDS_BROWSE_STOPPED));
    parts_.changed();
}

std::wstring WithReason(const std::wstring& text, const std::string& reason) {
    const std::string trimmed(TrimTrailingBlanks(reason));
    return trimmed.empty() ? text : text + L"\n" + WideFromAnsi(trimmed);
}

}  // namespace depot
