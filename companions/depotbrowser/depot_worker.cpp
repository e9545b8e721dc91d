#include "depotbrowser/depot_worker.h"

#include <deque>
#include <mutex>
#include <new>

#include "com/com_object.h"
#include "directory/call_connections.h"
#include "platform/handles.h"
#include "platform/module_state.h"
#include "platform/win32.h"
// After the Windows headers.
#include <objbase.h>

namespace depot {
namespace {

// COM for the shell, which does the operations on files.
class ShellApartment : NotCopied {
public:
    ShellApartment() : result_(CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED)) {}
    ~ShellApartment() {
        if (SUCCEEDED(result_)) CoUninitialize();
    }

private:
    HRESULT result_;
};

}  // namespace

struct DepotWorker::State {
    explicit State(std::shared_ptr<WindowMailbox> window) : mailbox(std::move(window)) {}

    // Returns the next job, waiting for one; nothing once the worker's object has ended.
    Job Next() {
        for (;;) {
            {
                const std::scoped_lock lock(mutex);
                if (ended) return {};
                if (!jobs.empty()) {
                    Job job = std::move(jobs.front());
                    jobs.pop_front();
                    return job;
                }
            }
            WaitForSingleObject(wake.get(), INFINITE);
        }
    }

    void Deliver(WindowMailbox::Delivery delivery) {
        const std::scoped_lock lock(mutex);
        if (!ended) mailbox->Send(std::move(delivery));
    }

    const std::shared_ptr<WindowMailbox> mailbox;
    const UniqueHandle wake{CreateEventA(nullptr, FALSE, FALSE, nullptr)};
    std::mutex mutex;
    std::deque<Job> jobs;
    bool ended = false;
};

// What a new thread is given. The thread owns it.
struct DepotWorker::Start {
    std::shared_ptr<State> state;
    HMODULE library = nullptr;
};

DepotWorker::DepotWorker(std::shared_ptr<WindowMailbox> mailbox)
    : state_(std::make_shared<State>(std::move(mailbox))) {
    auto start = std::make_unique<Start>(Start{state_, KeepOwnModule()});
    const UniqueHandle thread(CreateThread(nullptr, 0, Run, start.get(), 0, nullptr));
    if (!thread) {
        FreeLibrary(start->library);
        return;
    }
    static_cast<void>(start.release());  // the thread's from here on
}

DepotWorker::~DepotWorker() {
    std::deque<Job> dropped;
    {
        const std::scoped_lock lock(state_->mutex);
        state_->ended = true;
        dropped.swap(state_->jobs);
    }
    SetEvent(state_->wake.get());
}

void DepotWorker::Add(Job job) {
    {
        const std::scoped_lock lock(state_->mutex);
        state_->jobs.push_back(std::move(job));
    }
    SetEvent(state_->wake.get());
}

DWORD WINAPI DepotWorker::Run(void* parameter) {
    HMODULE library = nullptr;
    {
        const std::unique_ptr<Start> start(static_cast<Start*>(parameter));
        library = start->library;
        const ModuleLock lock;
        DoJobs(start->state);
    }
    // This code may be unloaded with its library: the thread must not return to it.
    FreeLibraryAndExitThread(library, 0);
}

void DepotWorker::DoJobs(const std::shared_ptr<State>& state) {
    try {
        const ShellApartment apartment;
        WorkerNotices notices(*state->mailbox);
        DepotSession session;
        const Reply reply = [&state](WindowMailbox::Delivery delivery) {
            state->Deliver(std::move(delivery));
        };
        while (Job job = state->Next()) {
            try {
                // What a job does at one location it does over one connection.
                const CallConnections connections;
                job(session, reply);
            } catch (const WorkAbandoned&) {
                // The window is closed: nothing waits for the result.
            }
        }
    } catch (const std::bad_alloc&) {
        // Without memory there is nothing to deliver.
    }
}

}  // namespace depot
