#include "platform/user_notice.h"

#include "platform/user_presence.h"

namespace depot {
namespace {

NoticeReceiver installed = nullptr;

}  // namespace

void InstallNoticeReceiver(NoticeReceiver receiver) {
    installed = receiver;
}

void ShowNotice(const std::string& text, const char* title, HWND owner, UINT style) {
    if (installed != nullptr) {
        installed(text);
    } else if (HasAPerson()) {
        MessageBoxA(owner, text.c_str(), title, style);
    } else {
        ReportUnshown(LogMessage::kNoticeNotShown, text);
    }
}

}  // namespace depot
