// What works behind the controls of the browse dialog. For the files of the window alone.
#pragma once

#include "depotbrowser/browse_ids.h"
#include "depotbrowser/browse_window.h"
#include "depotbrowser/depot_search.h"
#include "depotbrowser/drop_target.h"
#include "depotbrowser/file_preview.h"
#include "depotbrowser/kept_line.h"
#include "depotbrowser/list_drag.h"
#include "depotbrowser/name_suggestions.h"
#include "depotbrowser/path_bar.h"
#include "depotbrowser/window_colours.h"
#include "resource_ids.h"

namespace depot {

struct BrowseWindow::Parts {
    explicit Parts(BrowseWindow& window)
        : tree(window.Control(CONTROL_TREE), icons,
               {[this](const FolderRef& folder) { navigator.Open(folder); },
                [this](const FolderRef& folder) { navigator.LoadFolders(folder); }}),
          list(window.Control(CONTROL_LIST), icons, window.texts_,
               window.settings_.SelectsSeveral()),
          status(window.window_),
          path(window.window_, window.texts_,
               [this](const FolderRef& folder) { navigator.Open(folder); }),
          navigator({tree, list, status, window.texts_, window.mailbox_,
                     [&window] { window.FolderChanged(); }}),
          shared{window.window_, window.settings_, navigator,       list,
                 status,         window.texts_,    *window.mailbox_},
          commands(shared),
          choice(shared,
                 [&window](std::vector<std::string> paths) {
                     window.Finish(BrowseOutcome::kConfirmed, std::move(paths));
                 }),
          search(shared, [&window] { window.RowsChanged(); }),
          preview(shared),
          kept(window.window_, window.texts_, window.mailbox_, [&window] { window.MeasureAnew(); }),
          suggestions(window.window_, list, window.texts_.Text(IDS_BROWSE_SUGGESTIONS)),
          drops(shared, tree),
          site(window.window_, list, tree, navigator),
          drag(shared, site, drops),
          desktop(window.window_, DesktopEvents()),
          colours(window.window_) {}

    // What becomes of files that are dragged here from the desktop.
    DropEvents DesktopEvents() {
        const auto targetAt = [this](POINT place) {
            return drops.CanChange() ? site.FolderAt(place) : std::nullopt;
        };
        return {[this, targetAt](POINT place) {
                    const bool takes = targetAt(place).has_value();
                    site.Hover(place, takes);
                    return takes;
                },
                [this] { site.Leave(); },
                [this, targetAt](const DroppedPaths& paths, POINT place) {
                    if (const auto target = targetAt(place)) drops.Store(paths, *target);
                }};
    }

    BrowseIcons icons;
    FolderTree tree;
    FileList list;
    StatusLine status;
    PathBar path;
    FolderNavigator navigator;
    const BrowseParts shared;
    FileCommands commands;
    FileChoice choice;
    DepotSearch search;
    FilePreview preview;
    KeptLine kept;
    NameSuggestions suggestions;
    FileDrops drops;
    DropSite site;
    ListDrag drag;
    DropRegistration desktop;
    WindowColours colours;
};

}  // namespace depot
