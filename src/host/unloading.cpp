#include "host/unloading.h"

#include <atomic>
#include <memory>

#include "api/call_count.h"
#include "api/call_failure.h"
#include "api/credentials_dialog.h"
#include "api/session_table.h"
#include "directory/ldap_items.h"
#include "host/module.h"
#include "model/shared_definitions.h"
#include "platform/directory_client.h"
#include "platform/directory_service.h"
#include "platform/no_destructor.h"
#include "platform/not_copied.h"

namespace depot {
namespace {

bool IsUnused() {
    return Module().GetLockCount() == 0 && CallScope::Count() == 0;
}

// Asks as ever, but for this once.
class LastPrompt final : public CredentialsPrompt {
public:
    bool Show(Credentials& credentials) override { return dialog_.Show(credentials); }
    bool CancelIsForAll() const override { return false; }
    bool CanBeAnswered() const override { return dialog_.CanBeAnswered(); }

private:
    CredentialsDialog dialog_;
};

// Makes connections ask through the LastPrompt while it lives.
class LastPromptScope : NotCopied {
public:
    LastPromptScope() {
        static NoDestructor<LastPrompt> prompt;
        previous_ = InstallCredentialsPrompt(prompt.get());
    }
    ~LastPromptScope() { InstallCredentialsPrompt(previous_); }

private:
    CredentialsPrompt* previous_ = nullptr;
};

// Only one question at a time is answered.
class AnswerScope : NotCopied {
public:
    AnswerScope() : first_(!answering_.exchange(true)) {}
    ~AnswerScope() {
        if (first_) answering_ = false;
    }

    explicit operator bool() const { return first_; }

private:
    static inline std::atomic<bool> answering_ = false;
    const bool first_;
};

}  // namespace

bool PrepareUnloading() noexcept try {
    if (!IsUnused()) return false;
    const AnswerScope answer;
    if (!answer) return false;
    const LastPromptScope prompt;
    return SessionTable::Instance().EndThoseLeft(IsUnused) && IsUnused();
} catch (...) {
    return false;
}

void LeaveProcess() noexcept {
    SessionTable& sessions = SessionTable::Instance();
    // What is still at work needs its memory and its libraries.
    if (!sessions.LeaveAll() || CallScope::Count() > 0) return;
    std::destroy_at(&sessions);
    FreeFailuresOfThreads();
    FreeSharedDefinitions();
    FreeDirectoryClient();
    FreeDirectoryService();
}

}  // namespace depot
