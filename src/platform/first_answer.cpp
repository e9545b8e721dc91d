#include "platform/first_answer.h"

#include <algorithm>
#include <memory>
#include <mutex>
#include <utility>

#include "platform/lock.h"
#include "platform/module_state.h"
#include "platform/win32.h"

namespace depot {
namespace {

using std::chrono::duration_cast;
using std::chrono::milliseconds;
using std::chrono::steady_clock;

enum class AttemptState { kWaiting, kRunning, kFailed, kFallback, kSucceeded };

AttemptState StateAfter(Answer answer) {
    switch (answer) {
        case Answer::kGood:
            return AttemptState::kSucceeded;
        case Answer::kFallback:
            return AttemptState::kFallback;
        default:
            return AttemptState::kFailed;
    }
}

// What the attempts of one choice share.
struct Attempts {
    explicit Attempts(std::vector<std::function<Answer()>> list)
        : work(std::move(list)), states(work.size(), AttemptState::kWaiting) {}

    void Run(std::size_t index) noexcept {
        Answer answer = Answer::kNone;
        try {
            answer = work[index]();
        } catch (...) {
            answer = Answer::kNone;
        }
        const std::lock_guard guard(lock);
        states[index] = StateAfter(answer);
        WakeConditionVariable(&changed);
    }

    // The first attempt in this state; nothing where there is none. The caller holds the lock.
    std::optional<std::size_t> First(AttemptState state) const {
        const auto found = std::find(states.begin(), states.end(), state);
        if (found == states.end()) return std::nullopt;
        return static_cast<std::size_t>(found - states.begin());
    }

    Lock lock;
    CONDITION_VARIABLE changed = CONDITION_VARIABLE_INIT;
    const std::vector<std::function<Answer()>> work;
    std::vector<AttemptState> states;
};

struct ThreadStart {
    std::shared_ptr<Attempts> attempts;
    std::size_t index = 0;
    HMODULE library{};
};

DWORD WINAPI RunAttempt(void* argument) {
    HMODULE library = nullptr;
    {
        const std::unique_ptr<ThreadStart> start(static_cast<ThreadStart*>(argument));
        library = start->library;
        start->attempts->Run(start->index);
    }
    FreeLibraryAndExitThread(library, 0);
}

void Start(const std::shared_ptr<Attempts>& attempts, std::size_t index) {
    auto start = std::make_unique<ThreadStart>(ThreadStart{attempts, index});
    attempts->states[index] = AttemptState::kRunning;
    start->library = KeepOwnModule();
    HANDLE thread = nullptr;
    if (start->library != nullptr) {
        thread = CreateThread(nullptr, 0, RunAttempt, start.get(), 0, nullptr);
        if (thread == nullptr) FreeLibrary(start->library);
    }
    if (thread == nullptr) {
        attempts->Run(index);
        return;
    }
    CloseHandle(thread);
    static_cast<void>(start.release());  // the thread's
}

}  // namespace

std::optional<std::size_t> FirstAnswer(std::vector<std::function<Answer()>> attempts,
                                       std::chrono::milliseconds patience) {
    const auto shared = std::make_shared<Attempts>(std::move(attempts));
    const std::size_t count = shared->states.size();
    for (std::size_t started = 0;;) {
        if (started < count) Start(shared, started++);
        const bool isLast = started == count;
        const std::lock_guard guard(shared->lock);
        // Others are woken as well.
        for (const auto end = steady_clock::now() + patience;;) {
            if (const auto chosen = shared->First(AttemptState::kSucceeded)) return chosen;
            if (!shared->First(AttemptState::kRunning)) break;
            // The last one is awaited, however long it takes, where nothing else could be chosen.
            const bool isAwaited = isLast && !shared->First(AttemptState::kFallback);
            const auto left = duration_cast<milliseconds>(end - steady_clock::now()).count();
            if (!isAwaited && left <= 0) break;
            SleepConditionVariableSRW(&shared->changed, shared->lock.Native(),
                                      isAwaited ? INFINITE : static_cast<DWORD>(left), 0);
        }
        if (isLast) return shared->First(AttemptState::kFallback);
    }
}

}  // namespace depot
