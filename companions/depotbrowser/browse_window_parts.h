// What works behind the controls of the browse dialog. For the files of the window alone.
#pragma once

#include "depotbrowser/browse_ids.h"
#include "depotbrowser/browse_window.h"
#include "depotbrowser/depot_search.h"
#include "depotbrowser/file_preview.h"
#include "depotbrowser/kept_line.h"
#include "depotbrowser/name_suggestions.h"
#include "depotbrowser/path_bar.h"
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
          suggestions(window.window_, list, window.texts_.Text(IDS_BROWSE_SUGGESTIONS)) {}

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
};

}  // namespace depot
