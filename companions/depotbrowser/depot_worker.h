// A thread that works on depots while the window stays usable.
#pragma once

#include <exception>
#include <functional>
#include <memory>
#include <utility>

#include "depotbrowser/window_mailbox.h"
#include "depotbrowser/worker_notices.h"
#include "manager/depot_session.h"
#include "platform/not_copied.h"

namespace depot {

// Does jobs one after another on a thread of its own, with a session and thus a list of depots that
// no other thread uses. Its end does not wait for the thread: the result of the job at work is
// dropped, and the library stays loaded until the thread has ended.
class DepotWorker : NotCopied {
public:
    explicit DepotWorker(std::shared_ptr<WindowMailbox> mailbox);
    ~DepotWorker();

    // Has `work` done with the worker's session, and then `done` called with its result on the
    // window's thread, unless the worker's object has ended meanwhile. Work that ends in an
    // exception has the result that its type starts with, a failure without a reason.
    template <class Work, class Done>
    void Post(Work work, Done done) {
        Add([work = std::move(work), done = std::move(done)](DepotSession& session,
                                                             const Reply& reply) {
            decltype(work(session)) result;
            try {
                result = work(session);
            } catch (const std::exception&) {
                result = {};
            }
            reply([done, result = std::move(result)] { done(result); });
        });
    }

private:
    struct State;
    struct Start;
    using Reply = std::function<void(WindowMailbox::Delivery delivery)>;
    using Job = std::function<void(DepotSession& session, const Reply& reply)>;

    void Add(Job job);
    static DWORD WINAPI Run(void* parameter);
    static void DoJobs(const std::shared_ptr<State>& state);

    std::shared_ptr<State> state_;
};

}  // namespace depot
