// What the component would show in boxes of its own while it works for a window: errors, which the
// window shows in place, and the question for credentials, which the window asks.
#pragma once

#include <string>
#include <utility>

#include "depotbrowser/window_mailbox.h"
#include "platform/not_copied.h"

namespace depot {

// Thrown out of work that waits for an answer of a closed window. A prompt that was not seen
// must not count as cancelled: no process would ask for that server again.
struct WorkAbandoned {};

// While it lives, the errors of this thread are collected here and its prompts are passed to the
// window.
class WorkerNotices : NotCopied {
public:
    explicit WorkerNotices(WindowMailbox& mailbox);
    ~WorkerNotices();

    // The object of the calling thread, or null.
    static WorkerNotices* OfThisThread();

    WindowMailbox& Mailbox() { return mailbox_; }
    void Collect(const std::string& text) { last_ = text; }
    // Returns the last error and forgets it.
    std::string TakeLast() { return std::exchange(last_, {}); }

private:
    WindowMailbox& mailbox_;
    std::string last_;
};

// Has the component bring its errors and its prompts here, on every thread. Called once, when the
// DLL is loaded.
void RouteWorkerNotices();

// The last error of this thread's work; empty when there was none or it is no worker.
std::string TakeLastNotice();

}  // namespace depot
