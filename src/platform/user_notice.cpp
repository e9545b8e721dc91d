#include "platform/user_notice.h"

#include "platform/thread_slot.h"
#include "platform/user_presence.h"

namespace depot {
namespace {

NoticeReceiver installed = nullptr;

ThreadSlot<NoticeCollector> collectors;

}  // namespace

NoticeCollector::NoticeCollector() : outer_(collectors.Get()) {
    collectors.Set(this);
}

NoticeCollector::~NoticeCollector() {
    collectors.Set(outer_);
}

NoticeCollector* NoticeCollector::Current() {
    return collectors.Get();
}

void NoticeCollector::Take(const std::string& text) noexcept try {
    if (!texts_.empty()) texts_ += '\n';
    texts_ += text;
} catch (...) {
    // Without memory there is nothing to hold it.
}

void InstallNoticeReceiver(NoticeReceiver receiver) {
    installed = receiver;
}

void ShowNotice(const std::string& text, const char* title, HWND owner, UINT style) {
    if (NoticeCollector* const collector = NoticeCollector::Current()) {
        collector->Take(text);
    } else if (installed != nullptr) {
        installed(text);
    } else if (HasAPerson()) {
        MessageBoxA(owner, text.c_str(), title, style);
    } else {
        ReportUnshown(LogMessage::kNoticeNotShown, text);
    }
}

}  // namespace depot
