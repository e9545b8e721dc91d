#include "platform/user_notice.h"

namespace depot {
namespace {

NoticeReceiver installed = nullptr;

}  // namespace

void InstallNoticeReceiver(NoticeReceiver receiver) {
    installed = receiver;
}

void ShowNotice(const std::string& text, const char* title, HWND owner) {
    if (installed != nullptr) {
        installed(text);
    } else {
        MessageBoxA(owner, text.c_str(), title, MB_ICONERROR | MB_OK);
    }
}

}  // namespace depot
