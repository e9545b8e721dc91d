#include "api/call_failure.h"

#include <algorithm>
#include <atomic>
#include <mutex>
#include <new>
#include <utility>
#include <vector>

#include "api/automation_text.h"
#include "model/help_texts.h"
#include "platform/directory_client.h"
#include "platform/error_text.h"
#include "platform/lock.h"
#include "platform/no_destructor.h"
#include "platform/text.h"

namespace depot {
namespace {

static_assert(kUnexplained == ERROR_CAN_NOT_COMPLETE);

// How many threads' failures are kept.
constexpr std::size_t kMostThreads = 64;

struct ThreadFailure {
    DWORD thread;
    CallFailure failure;
};

struct ThreadFailures {
    Lock lock;
    std::vector<ThreadFailure> list;  // the oldest first
    // Most calls succeed on threads that have nothing to forget.
    std::atomic<std::size_t> count = 0;
};

ThreadFailures& Threads() {
    static NoDestructor<ThreadFailures> threads;
    return *threads;
}

// REQUIRES: the lock is held.
void Forget(ThreadFailures& threads, DWORD thread) {
    std::erase_if(threads.list, [&](const auto& entry) { return entry.thread == thread; });
    threads.count = threads.list.size();
}

// What directories answer where no reason of ours says more.
std::uint32_t SystemCodeOfDirectory(std::uint32_t code) {
    switch (code) {
        case LDAP_SUCCESS:
            return kUnexplained;
        case LDAP_INSUFFICIENT_RIGHTS:
        case LDAP_NO_SUCH_ATTRIBUTE:  // the user may not see it
            return ERROR_ACCESS_DENIED;
        case LDAP_INVALID_CREDENTIALS:
        case LDAP_INAPPROPRIATE_AUTH:
        case LDAP_STRONG_AUTH_REQUIRED:
        case LDAP_AUTH_METHOD_NOT_SUPPORTED:
            return ERROR_LOGON_FAILURE;
        case LDAP_SERVER_DOWN:
        case LDAP_CONNECT_ERROR:
        case LDAP_UNAVAILABLE:
            return ERROR_HOST_UNREACHABLE;
        case LDAP_BUSY:
            return ERROR_BUSY;
        case LDAP_TIMEOUT:
        case LDAP_TIMELIMIT_EXCEEDED:
            return ERROR_TIMEOUT;
        case LDAP_NO_MEMORY:
            return ERROR_NOT_ENOUGH_MEMORY;
        case LDAP_NO_SUCH_OBJECT:
            return ERROR_FILE_NOT_FOUND;
        case LDAP_ALREADY_EXISTS:
            return ERROR_FILE_EXISTS;
        default:
            return kUnexplained;
    }
}

constexpr std::pair<Reason, std::uint32_t> kCodes[] = {
    {Reason::kMissing, ERROR_FILE_NOT_FOUND},    {Reason::kExists, ERROR_FILE_EXISTS},
    {Reason::kChanged, ERROR_REVISION_MISMATCH}, {Reason::kNotEmpty, ERROR_DIR_NOT_EMPTY},
    {Reason::kUnseen, ERROR_ACCESS_DENIED},      {Reason::kBadName, ERROR_INVALID_NAME},
    {Reason::kSharedName, ERROR_ALREADY_EXISTS}, {Reason::kIncomplete, ERROR_PARTIAL_COPY},
    {Reason::kStopped, ERROR_CANCELLED},         {Reason::kUnreachable, ERROR_HOST_UNREACHABLE},
    {Reason::kInvalid, ERROR_INVALID_PARAMETER},
};

// A directory's own words: the system's are those of errors of its own that stand for these codes.
std::string TextFor(const Error& error) {
    if (error.kind != CodeKind::kDirectory) return error.text;
    const std::optional<std::string> help = HelpForDirectoryCode(error.code);
    if (!help) return error.text;
    return Concatenate({*help, " (LDAP ", NumberText(error.code), ")"});
}

}  // namespace

std::uint32_t SystemCodeOf(const Error& error) {
    if (error.kind == CodeKind::kSystem && error.code != 0) return error.code;
    for (const auto& [reason, code] : kCodes) {
        if (reason == error.reason) return code;
    }
    return error.kind == CodeKind::kDirectory ? SystemCodeOfDirectory(error.code) : kUnexplained;
}

CallFailure FailureOf(bool succeeded) noexcept {
    return {succeeded ? 0 : kUnexplained};
}

CallFailure FailureOf(const Result& result) noexcept {
    CallFailure failure;
    if (result) return failure;
    failure.code = SystemCodeOf(result.Why());
    try {
        failure.text = TextFor(result.Why());
    } catch (...) {
        // The code says enough.
    }
    return failure;
}

CallFailure FailureOfException() noexcept {
    try {
        throw;
    } catch (const RefusedName&) {
        return {ERROR_INVALID_NAME};
    } catch (const std::bad_alloc&) {
        return {ERROR_NOT_ENOUGH_MEMORY};
    } catch (...) {
        return {kUnexplained};
    }
}

void AddNotices(const NoticeCollector& notices, CallFailure& failure) noexcept try {
    if (notices.Texts().empty()) return;
    if (failure.code == 0) {
        failure.code = kUnexplained;
        failure.isNotice = true;
    }
    // What was shown may say the same with more words.
    if (notices.Texts().find(failure.text) != std::string::npos) failure.text.clear();
    if (!failure.text.empty()) failure.text += '\n';
    failure.text += notices.Texts();
} catch (...) {
    // The code says enough.
}

std::string TextOf(const CallFailure& failure) {
    if (failure.code == 0 || !failure.text.empty()) return failure.text;
    std::string text;
    FormatErrorText(failure.code, nullptr, nullptr, &text, nullptr);
    return text;
}

CallFailure FailureOfThread() {
    ThreadFailures& threads = Threads();
    const std::lock_guard guard(threads.lock);
    const auto found =
        std::find_if(threads.list.begin(), threads.list.end(),
                     [](const auto& entry) { return entry.thread == GetCurrentThreadId(); });
    return found == threads.list.end() ? CallFailure() : found->failure;
}

void NoteFailureOfThread(const CallFailure& failure) noexcept try {
    ThreadFailures& threads = Threads();
    const DWORD thread = GetCurrentThreadId();
    const std::lock_guard guard(threads.lock);
    Forget(threads, thread);
    if (threads.list.size() == kMostThreads) threads.list.erase(threads.list.begin());
    threads.list.push_back({thread, failure});
    threads.count = threads.list.size();
} catch (...) {
    // Without memory there is no place to keep it.
}

void FreeFailuresOfThreads() noexcept {
    ThreadFailures& threads = Threads();
    const std::lock_guard guard(threads.lock);
    threads.count = 0;
    threads.list = decltype(threads.list)();
}

void ForgetFailureOfThread() noexcept {
    ThreadFailures& threads = Threads();
    if (threads.count == 0) return;
    const std::lock_guard guard(threads.lock);
    Forget(threads, GetCurrentThreadId());
}

}  // namespace depot
