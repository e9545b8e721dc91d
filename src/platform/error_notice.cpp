#include "platform/error_notice.h"

#include "platform/win32.h"

namespace depot {
namespace {

constexpr char kMessageTitle[] = "Quillon";

ErrorNotice installed = nullptr;

}  // namespace

void InstallErrorNotice(ErrorNotice notice) {
    installed = notice;
}

void ShowErrorNotice(const std::string& text) {
    if (installed != nullptr) {
        installed(text);
    } else {
        MessageBoxA(nullptr, text.c_str(), kMessageTitle, MB_ICONERROR);
    }
}

}  // namespace depot
