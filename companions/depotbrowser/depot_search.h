// The search: what is typed shows the names that match, at first in the shown folder and then in
// the whole depot.
#pragma once

#include <atomic>
#include <functional>
#include <memory>
#include <optional>
#include <utility>

#include "depotbrowser/folder_navigator.h"
#include "depotbrowser/folder_walk.h"

namespace depot {

// Reads the search field of the dialog. The depot is looked through by its worker, a moment at a
// time and only as long as the search stays the same.
class DepotSearch {
public:
    // `shown` is called when other rows are shown.
    DepotSearch(const BrowseParts& parts, std::function<void()> shown)
        : parts_(parts), shown_(std::move(shown)) {}

    // The number of the dialog's timer after which the depot is searched, too.
    static constexpr UINT_PTR kPauseTimer = 2;

    void TextChanged();
    void TimerElapsed();
    // The shown folder is another one, which ends a search, or it has been loaded anew, which
    // repeats it.
    void FolderChanged();
    // Empties the field; false when it was empty.
    bool Clear();
    bool IsActive() const { return !words_.IsEmpty(); }

private:
    void Begin();
    void Continue(WalkState state);
    void Show(const WalkState& state);
    void ShowEnd(const WalkState& state);
    void Stop();

    const BrowseParts parts_;
    const std::function<void()> shown_;
    SearchWords words_;
    std::optional<FolderRef> folder_;
    bool wasLoaded_ = false;
    std::size_t found_ = 0;
    // The number of the search, which the worker looks at.
    std::shared_ptr<std::atomic<unsigned>> newest_ = std::make_shared<std::atomic<unsigned>>(0);
};

}  // namespace depot
