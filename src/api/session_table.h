// The sessions that clients hold handles to.
#pragma once

#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <unordered_map>
#include <vector>

#include "api/call_failure.h"
#include "manager/depot_session.h"
#include "platform/low_memory.h"
#include "platform/not_copied.h"
#include "platform/user_notice.h"

namespace depot {

// Every live session of the process. A session's handle is its address; sessions are placed below
// 2 GB while there is room, because automation clients carry handles of 32 bits. The table is the
// only way from a handle to a session, so a stale or invented handle names none. A handle that came
// through a 32-bit parameter may carry foreign bits in its upper half: wherever one is taken they
// do not count when the whole value names no session. Locked: several apartments create and end
// sessions at once.
class SessionTable : NotCopied {
public:
    static SessionTable& Instance();

    // Makes a session and returns its handle; 0 when memory is exhausted.
    LONG_PTR Create();

    // Returns the session of a live handle, or null.
    DepotSession* Find(LONG_PTR handle);

    // Takes the session of a live handle for one call, which Leave ends. Null when there is none,
    // or when a call is at work on it: one that shows a message, which lets the client's own
    // windows call again, must find its session as it was.
    DepotSession* Enter(LONG_PTR handle);
    void Leave(LONG_PTR handle);

    // Returns the live handle that `handle` stands for, or 0.
    LONG_PTR Widen(LONG_PTR handle);

    // Whether the handle is 0, foreign bits aside.
    bool IsZero(LONG_PTR handle);

    // Ends the session of a live handle, at once or, when a call is at work on it, as soon as that
    // leaves; the handle is no longer live in either case. Any other handle is left alone.
    void Destroy(LONG_PTR handle);

    // Takes a session out of reach of every handle without ending it.
    void Abandon(LONG_PTR handle);

    // Ends the sessions that clients left behind, one after another as long as `goesOn` says so,
    // but for those that a call is at work on. While one of them is written back, messages may run
    // other calls: sessions that come meanwhile are left alone. Returns whether no session is left.
    bool EndThoseLeft(const std::function<bool()>& goesOn);

    // Ends all sessions while the library is being taken out of the process, where nothing may
    // wait: nothing is stored, asked or shown, and changed working copies are kept among the
    // recovered files. Returns whether nothing is at work any more: no call and no connection.
    bool LeaveAll() noexcept;

    // For Instance only, which does not end before the DLL is taken out of the process.
    SessionTable() = default;
    ~SessionTable();

private:
    struct Use {
        bool busy = false;
        bool ending = false;
    };

    LONG_PTR Publish(void* slot);
    bool IsLive(LONG_PTR handle) const;
    LONG_PTR LiveHandle(LONG_PTR handle) const;
    LONG_PTR Remove(LONG_PTR handle);
    bool RemoveIdle(LONG_PTR handle);
    std::vector<LONG_PTR> IdleHandles();
    void DestroyRemoved(LONG_PTR handle);

    std::mutex lock_;
    LowMemoryPool pool_{sizeof(DepotSession)};
    std::unordered_map<LONG_PTR, Use> sessions_;
};

// A session that is made for a client, and the client's variable for its handle. Without Keep the
// session ends with this object, and the variable is 0 again.
class NewSession : NotCopied {
public:
    explicit NewSession(LONG_PTR& variable)
        : handle_(SessionTable::Instance().Create()), variable_(variable) {
        variable_ = handle_;
    }
    ~NewSession() {
        if (handle_ == 0) return;
        variable_ = 0;
        SessionTable::Instance().Destroy(handle_);
    }

    LONG_PTR Handle() const { return handle_; }
    void Keep() { handle_ = 0; }

private:
    LONG_PTR handle_;
    LONG_PTR& variable_;
};

// The session for one call: the one that a handle names, or a temporary one for handle 0 where the
// method allows it, which ends with this object. Empty when there is no session to use, or when
// another call is at work on it. While it lives a quiet session's calls show nothing.
class SessionForCall : NotCopied {
public:
    enum class WithoutHandle { kFail, kMakeTemporary };

    SessionForCall(LONG_PTR handle, WithoutHandle withoutHandle);
    ~SessionForCall();

    explicit operator bool() const { return session_ != nullptr; }
    DepotSession* operator->() const { return session_; }
    DepotSession& operator*() const { return *session_; }

    // The code of there being no session: the handle names none, or a call is at work on it.
    std::uint32_t Refusal() const { return refusal_; }

    // Ends the call's work: keeps for the client why it failed, with what a quiet session had to
    // show, and returns that. A call that does not end it has not failed.
    CallFailure End(CallFailure failure) noexcept;

private:
    std::unique_ptr<DepotSession> temporary_;
    LONG_PTR entered_ = 0;
    DepotSession* session_ = nullptr;
    std::uint32_t refusal_ = 0;
    bool hasEnded_ = false;
    std::optional<NoticeCollector> notices_;  // of a quiet session
};

}  // namespace depot
