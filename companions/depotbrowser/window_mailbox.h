// The way from the worker threads back to the window.
#pragma once

#include <deque>
#include <functional>
#include <mutex>

#include "depotbrowser/prompt_window.h"
#include "platform/win32.h"

namespace depot {

// What a worker delivers runs on the window's thread, and only as long as the window is open.
// Shared by the window and its workers, of which some may outlive it.
class WindowMailbox {
public:
    using Delivery = std::function<void()>;

    // The messages by which the window is made to act, each answered by the operation named.
    static constexpr UINT kDeliverMessage = WM_APP + 1;  // Deliver
    static constexpr UINT kPromptMessage = WM_APP + 2;   // AnswerPrompt, with its parameter

    void Open(HWND window);
    // From here on nothing is delivered any more; what was not is dropped.
    void Close();

    // From any thread.
    void Send(Delivery delivery);
    // Has the window ask the user, and waits for the answer; kNotShown when the window is closed.
    PromptOutcome AskForCredentials(PromptFields& fields);

    // On the window's thread.
    void Deliver();
    static LRESULT AnswerPrompt(HWND window, LPARAM parameter);

private:
    HWND Window();

    std::mutex mutex_;
    HWND window_ = nullptr;
    std::deque<Delivery> deliveries_;
};

}  // namespace depot
