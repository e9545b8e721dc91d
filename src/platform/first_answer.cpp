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

enum class AttemptState { kWaiting, kRunning, kFailed, kSucceeded };

// What the attempts of one choice share.
struct Attempts {
    explicit Attempts(std::vector<std::function<bool()>> list)
        : work(std::move(list)), states(work.size(), AttemptState::kWaiting) {}

    void Run(std::size_t index) noexcept {
        bool succeeded = false;
        try {
            succeeded = work[index]();
        } catch (...) {
            succeeded = false;
        }
        const std::lock_guard guard(lock);
        states[index] = succeeded ? AttemptState::kSucceeded : AttemptState::kFailed;
        WakeConditionVariable(&changed);
    }

    Lock lock;
    CONDITION_VARIABLE changed = CONDITION_VARIABLE_INIT;
    const std::vector<std::function<bool()>> work;
    std::vector<AttemptState> states;
};

struct ThreadStart {
    std::shared_ptr<Attempts> attempts;
    std::size_t index = 0;
    HMODULE library = nullptr;
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
    attempts->states[index] = AttemptState::kRunning;
    auto start = std::make_unique<ThreadStart>(attempts, index, KeepOwnModule());
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

std::optional<std::size_t> FirstAnswer(std::vector<std::function<bool()>> attempts,
                                       std::chrono::milliseconds patience) {
    const auto shared = std::make_shared<Attempts>(std::move(attempts));
    std::vector<AttemptState>& states = shared->states;
    const auto is = [](AttemptState state) {
        return [state](AttemptState other) { return other == state; };
    };
    for (std::size_t started = 0;;) {
        if (started < states.size()) Start(shared, started++);
        const bool isLast = started == states.size();
        const std::lock_guard guard(shared->lock);
        // Others are woken as well.
        for (const auto end = steady_clock::now() + patience;;) {
            const auto chosen =
                std::find_if(states.begin(), states.end(), is(AttemptState::kSucceeded));
            if (chosen != states.end()) return static_cast<std::size_t>(chosen - states.begin());
            if (std::none_of(states.begin(), states.end(), is(AttemptState::kRunning))) break;
            const auto left = duration_cast<milliseconds>(end - steady_clock::now()).count();
            if (!isLast && left <= 0) break;
            SleepConditionVariableSRW(&shared->changed, shared->lock.Native(),
                                      isLast ? INFINITE : static_cast<DWORD>(left), 0);
        }
        if (isLast) return std::nullopt;
    }
}

}  // namespace depot
