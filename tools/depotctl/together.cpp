#include "depotctl/together.h"

#include <algorithm>
#include <atomic>
#include <cstddef>
#include <exception>
#include <mutex>
#include <system_error>
#include <thread>

namespace depot::ctl {
namespace {

// Most of the time all of them wait for servers.
constexpr std::size_t kMostThreads = 32;

class Pool {
public:
    explicit Pool(const std::vector<std::function<void()>>& work) : work_(work) {}

    void Run() {
        {
            std::vector<std::jthread> others;
            try {
                const std::size_t threads = std::min(work_.size(), kMostThreads);
                while (others.size() + 1 < threads) others.emplace_back([this] { DoRest(); });
            } catch (const std::system_error&) {
                // Those that there are do it alone.
            }
            DoRest();
        }
        if (failure_) std::rethrow_exception(failure_);
    }

private:
    void DoRest() noexcept {
        for (std::size_t index = next_++; index < work_.size(); index = next_++) {
            try {
                work_[index]();
            } catch (...) {
                const std::lock_guard guard(lock_);
                if (!failure_) failure_ = std::current_exception();
            }
        }
    }

    const std::vector<std::function<void()>>& work_;
    std::atomic<std::size_t> next_ = 0;
    std::mutex lock_;
    std::exception_ptr failure_;
};

}  // namespace

void DoTogether(const std::vector<std::function<void()>>& work) {
    Pool(work).Run();
}

}  // namespace depot::ctl
