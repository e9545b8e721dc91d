// Failures that are shown to the user whatever the caller does with them.
#pragma once

#include <string>

#include "platform/not_copied.h"
#include "platform/win32.h"

namespace depot {

// Takes the texts of notices in place of the message boxes.
using NoticeReceiver = void (*)(const std::string& text);

// Sends all further notices to `receiver`: a program without windows must not wait for a button.
// Null, as at the beginning, shows message boxes.
void InstallNoticeReceiver(NoticeReceiver receiver);

// Takes the notices of this thread while it lives, in place of whatever would show them, and stands
// for a caller that wants no boxes: nothing else may ask the user either. The innermost one counts.
class NoticeCollector : NotCopied {
public:
    NoticeCollector();
    ~NoticeCollector();

    // The innermost of this thread; null where there is none.
    static NoticeCollector* Current();

    // What was taken, a line for each; without memory the text is left out.
    const std::string& Texts() const { return texts_; }
    void Take(const std::string& text) noexcept;

private:
    NoticeCollector* const outer_;
    std::string texts_;
};

// The title of boxes that need no other one.
inline constexpr char kNoticeTitle[] = "Quillon";

// Shows the text in a box of that style, owned by `owner`, that may be null, and waits until the
// user confirms it. In a process whose windows no person sees (user_presence.h) the text is written
// to the trace and to the event log instead.
void ShowNotice(const std::string& text, const char* title = kNoticeTitle, HWND owner = nullptr,
                UINT style = MB_ICONERROR | MB_OK);

}  // namespace depot
