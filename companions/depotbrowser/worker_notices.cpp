#include "depotbrowser/worker_notices.h"

#include <map>
#include <mutex>

#include "directory/ldap_items.h"
#include "platform/no_destructor.h"
#include "platform/user_notice.h"
#include "platform/wide_text.h"

namespace depot {
namespace {

struct Workers {
    std::mutex mutex;
    std::map<DWORD, WorkerNotices*> byThread;
};

Workers& AllWorkers() {
    static NoDestructor<Workers> workers;
    return *workers;
}

// Passes the question on to the window for which the calling thread works.
class WindowPrompt final : public CredentialsPrompt {
public:
    bool Show(Credentials& credentials) override {
        WorkerNotices* const worker = WorkerNotices::OfThisThread();
        if (worker == nullptr) return false;
        PromptFields fields = {WideFromAnsi(credentials.server),
                               WideFromAnsi(credentials.userName),
                               WideFromAnsi(credentials.password.Plain()),
                               true,
                               credentials.failure,
                               credentials.isSecured,
                               credentials.mayBeStored};
        if (credentials.asking != nullptr) {
            fields.userNameExample = WideFromAnsi(credentials.asking->UserNameExample());
        }
        const PromptOutcome outcome = worker->Mailbox().AskForCredentials(fields);
        if (outcome == PromptOutcome::kNotShown) throw WorkAbandoned();
        if (outcome == PromptOutcome::kCancelled) return false;
        // The window confirms only what can be had exactly.
        credentials.userName = ExactAnsiFromWide(fields.userName).value();
        credentials.password = ExactAnsiFromWide(fields.password.Plain()).value();
        credentials.isToBeStored = fields.isToBeStored;
        return true;
    }
};

void Collect(const std::string& text) {
    // Threads other than the workers do nothing that could fail this way.
    if (WorkerNotices* const worker = WorkerNotices::OfThisThread()) worker->Collect(text);
}

}  // namespace

WorkerNotices::WorkerNotices(WindowMailbox& mailbox) : mailbox_(mailbox) {
    Workers& workers = AllWorkers();
    const std::scoped_lock lock(workers.mutex);
    workers.byThread[GetCurrentThreadId()] = this;
}

WorkerNotices::~WorkerNotices() {
    Workers& workers = AllWorkers();
    const std::scoped_lock lock(workers.mutex);
    workers.byThread.erase(GetCurrentThreadId());
}

WorkerNotices* WorkerNotices::OfThisThread() {
    Workers& workers = AllWorkers();
    const std::scoped_lock lock(workers.mutex);
    const auto found = workers.byThread.find(GetCurrentThreadId());
    return found == workers.byThread.end() ? nullptr : found->second;
}

std::string TakeLastNotice() {
    WorkerNotices* const worker = WorkerNotices::OfThisThread();
    return worker != nullptr ? worker->TakeLast() : std::string();
}

void RouteWorkerNotices() {
    static NoDestructor<WindowPrompt> prompt;
    InstallNoticeReceiver(Collect);
    InstallCredentialsPrompt(prompt.get());
}

}  // namespace depot
