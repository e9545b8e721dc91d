#include "depotbrowser/kept_line.h"

#include <utility>

#include "depotbrowser/browse_ids.h"
#include "depotbrowser/dialog_template.h"
#include "depotbrowser/kept_files.h"
#include "depotbrowser/kept_ids.h"
#include "depotbrowser/kept_window.h"
#include "resource_ids.h"

namespace depot {

KeptLine::KeptLine(HWND dialog, const BrowseTexts& texts, std::shared_ptr<WindowMailbox> mailbox,
                   std::function<void()> changed)
    : dialog_(dialog),
      button_(GetDlgItem(dialog, CONTROL_KEPT_LINE)),
      texts_(texts),
      mailbox_(std::move(mailbox)),
      changed_(std::move(changed)) {
    SetWindowTextW(button_, texts_.Text(IDS_KEPT_LINE, L"0").c_str());
}

void KeptLine::Begin(const CDepots& depots) {
    if (HasDirectory(depots)) Count();
}

void KeptLine::Count() {
    if (!worker_) worker_ = std::make_unique<DepotWorker>(mailbox_);
    worker_->Post([](DepotSession& session) { return FindKeptFiles(session).size(); },
                  [this](std::size_t count) { Show(count); });
}

void KeptLine::Show(std::size_t count) {
    const std::wstring text = texts_.Text(IDS_KEPT_LINE, std::to_wstring(count));
    const bool isNew = TextOf(button_) != text;
    if (isNew) SetWindowTextW(button_, text.c_str());
    const bool isShown = count > 0;
    // The focus must not stay on a button that is hidden.
    if (!isShown && GetFocus() == button_) {
        SendMessageW(dialog_, WM_NEXTDLGCTL,
                     reinterpret_cast<WPARAM>(GetDlgItem(dialog_, CONTROL_LIST)), TRUE);
    }
    const bool isChange = isShown != isShown_;
    isShown_ = isShown;
    if (isChange || (isShown && isNew)) changed_();
    if (isChange) ShowWindow(button_, isShown ? SW_SHOW : SW_HIDE);
}

void KeptLine::Open() {
    if (isOpen_) return;
    isOpen_ = true;
    ShowKeptWindow(dialog_, texts_);
    isOpen_ = false;
    if (IsWindow(dialog_)) Count();
}

}  // namespace depot
