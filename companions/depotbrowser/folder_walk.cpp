#include "depotbrowser/folder_walk.h"

#include <utility>

#include "depotbrowser/depot_listing.h"
#include "depotbrowser/name_rules.h"
#include "platform/text.h"
#include "platform/wide_text.h"

namespace depot {
namespace {

// The results so far are shown each time; a connection to a directory lasts as long.
constexpr ULONGLONG kMomentMilliseconds = 250;

constexpr std::size_t kMostFolders = 20000;

// A link to a folder above would else never end.
constexpr std::size_t kDeepest = 40;

void Examine(DepotSession& session, const WalkRequest& request, const std::string& relative,
             WalkState& state) {
    Listing listing = ListFolder(session, {request.depot, relative});
    if (!listing.succeeded) ++state.unreadable;
    const bool isShown = EqualsNoCase(relative, request.shown);
    const bool isDeepest = FolderNames(relative).size() >= kDeepest;
    // The first of the folders is the next one to be looked at.
    for (auto entry = listing.entries.rbegin(); entry != listing.entries.rend(); ++entry) {
        if (entry->isFolder && !isDeepest) {
            state.open.push_back(relative + entry->name + "\\");
        }
    }
    if (isShown) return;
    for (BrowseEntry& entry : listing.entries) {
        if (!request.words.Match(entry.foldedName)) continue;
        entry.elsewhere = relative;
        entry.shownFolder = WideFromAnsi(relative);
        state.found.push_back(std::move(entry));
    }
}

}  // namespace

WalkState WalkOn(DepotSession& session, const WalkRequest& request, WalkState state) {
    state.found.clear();
    state.succeeded = true;
    const ULONGLONG start = GetTickCount64();
    while (!state.open.empty() && request.isWanted()) {
        const std::string relative = std::move(state.open.back());
        state.open.pop_back();
        Examine(session, request, relative, state);
        if (++state.examined >= kMostFolders) {
            state.unreadable += state.open.size();
            state.open.clear();
        }
        if (GetTickCount64() - start >= kMomentMilliseconds) break;
    }
    return state;
}

}  // namespace depot
