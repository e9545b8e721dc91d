#include "depotbrowser/window_mailbox.h"

#include <utility>

namespace depot {
namespace {

// Answers of the window. A closed one answers every message with 0.
constexpr LRESULT kCancelled = 1;
constexpr LRESULT kConfirmed = 2;

}  // namespace

void WindowMailbox::Open(HWND window) {
    const std::scoped_lock lock(mutex_);
    window_ = window;
}

void WindowMailbox::Close() {
    std::deque<Delivery> dropped;
    const std::scoped_lock lock(mutex_);
    window_ = nullptr;
    dropped.swap(deliveries_);
}

HWND WindowMailbox::Window() {
    const std::scoped_lock lock(mutex_);
    return window_;
}

void WindowMailbox::Send(Delivery delivery) {
    const std::scoped_lock lock(mutex_);
    if (window_ == nullptr) return;
    deliveries_.push_back(std::move(delivery));
    PostMessageW(window_, kDeliverMessage, 0, 0);
}

void WindowMailbox::Deliver() {
    for (;;) {
        Delivery next;
        {
            const std::scoped_lock lock(mutex_);
            if (deliveries_.empty()) return;
            next = std::move(deliveries_.front());
            deliveries_.pop_front();
        }
        next();
    }
}

PromptOutcome WindowMailbox::AskForCredentials(PromptFields& fields) {
    const HWND window = Window();
    if (window == nullptr) return PromptOutcome::kNotShown;
    // The window's thread must not hold the lock meanwhile: it is busy with the prompt.
    switch (SendMessageW(window, kPromptMessage, 0, reinterpret_cast<LPARAM>(&fields))) {
        case kConfirmed:
            return PromptOutcome::kConfirmed;
        case kCancelled:
            return PromptOutcome::kCancelled;
        default:
            return PromptOutcome::kNotShown;
    }
}

LRESULT WindowMailbox::AnswerPrompt(HWND window, LPARAM parameter) {
    auto& fields = *reinterpret_cast<PromptFields*>(parameter);
    const PromptOutcome outcome = ShowPromptWindow(window, fields);
    if (!IsWindow(window)) return 0;  // it was closed with the prompt, which was not cancelled
    return outcome == PromptOutcome::kConfirmed ? kConfirmed : kCancelled;
}

}  // namespace depot
