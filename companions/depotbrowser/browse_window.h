// The window of the browse dialog: its controls and what their messages mean.
#pragma once

#include <memory>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "depotbrowser/browse_layout.h"
#include "depotbrowser/browse_memory.h"
#include "depotbrowser/browse_settings.h"
#include "depotbrowser/browse_texts.h"
#include "depotbrowser/dialog_template.h"
#include "depotbrowser/file_choice.h"
#include "depotbrowser/file_commands.h"
#include "depotbrowser/file_list.h"
#include "depotbrowser/folder_navigator.h"
#include "depotbrowser/folder_tree.h"
#include "depotbrowser/status_line.h"
#include "platform/not_copied.h"

namespace depot {

class ContextMenu;

// A key, and the control that does the same.
struct KeyCommand {
    WPARAM key;
    int control;
};

// One open dialog. The parts borrow from each other and from this object, which outlives them.
class BrowseWindow : NotCopied {
public:
    explicit BrowseWindow(const BrowseSettings& settings);
    ~BrowseWindow();

    // Makes the window and handles it until the user is done.
    BrowseOutcome Show(std::vector<std::string>& chosen);

private:
    // What works behind the controls, made with them.
    struct Parts;

    static INT_PTR CALLBACK Handle(HWND window, UINT message, WPARAM first, LPARAM second) noexcept;
    INT_PTR HandleMessage(UINT message, WPARAM first, LPARAM second);
    void Start(HWND window);
    void OpenFirstFolder();
    void FillTexts() const;
    void FillFileTypes() const;
    void HideWhatIsNotOffered() const;
    void SetAccessibleNames() const;

    LayoutMetrics Measure() const;
    int ButtonWidth(int control, int least) const;
    int ButtonWidth(int control, const std::wstring& text) const;
    void Place();
    void MeasureAnew();
    void PlaceWindow() const;
    void LimitSize(MINMAXINFO& limits) const;
    void KeepWhatIsRemembered() const;
    void ResolutionChanged(int pixelsPerInch, const RECT& place);
    void UseFontOfResolution();
    void HandOnToControls(UINT message, WPARAM first, LPARAM second) const;

    INT_PTR HandleCommand(int control, int notification);
    INT_PTR HandleNotify(const NMHDR& header);
    INT_PTR HandleListNotify(const NMHDR& header);
    void HandleNameNotify(int notification);
    // Does what a control or a line of a menu stands for, or what a key does as one of them.
    bool RunCommand(int control);
    bool RunCommandOf(std::span<const KeyCommand> keys, WPARAM key);
    void Stop();
    bool IsSuggestion(LPARAM sender) const;
    INT_PTR SuggestionClicked(int notification);
    bool TranslateKey(const MSG& message);
    bool TranslateControlKey(const MSG& message);
    bool ShowContextMenu(HWND control, LPARAM place);
    void AddSelectionCommands(ContextMenu& menu) const;
    void OpenSelected();
    void GoToFolderOfSelected();
    void Refresh();
    INT_PTR Answer(LRESULT result) const;
    void Confirm();
    void FileTypeChanged();
    void FolderChanged();
    void RowsChanged();
    void ShowCount() const;
    void OpenSelectedFolder(const BrowseEntry& entry);
    void SelectAll() const;
    void ShowWhatConfirmDoes() const;
    void AskForHelp() const;
    void WindowCloses();
    void Finish(BrowseOutcome outcome, std::vector<std::string> paths = {});

    HWND Control(int control) const { return GetDlgItem(window_, control); }

    BrowseSettings settings_;
    const BrowseTexts texts_;
    HWND window_ = nullptr;
    std::shared_ptr<WindowMailbox> mailbox_ = std::make_shared<WindowMailbox>();
    std::unique_ptr<Parts> parts_;
    const BrowseMemory memory_;
    LayoutMetrics metrics_;
    static constexpr int kUsualResolution = 96;
    static constexpr int kSmallIcon = 16;  // in units of the usual resolution
    int pixelsPerInch_ = kUsualResolution;
    UniqueFont font_;  // of another resolution than the first one
    bool closing_ = false;
    std::optional<BrowseOutcome> outcome_;
    std::vector<std::string> chosen_;
};

}  // namespace depot
