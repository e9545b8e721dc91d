// The connection to one location's server.
#pragma once

#include <chrono>
#include <cstdint>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "config/depot_path.h"
#include "directory/call_connections.h"
#include "directory/credentials_prompt.h"
#include "directory/ldap_handles.h"
#include "directory/ldap_result.h"
#include "directory/shared_credentials.h"
#include "platform/digest.h"
#include "platform/directory_client.h"
#include "platform/not_copied.h"
#include "platform/paging_client.h"

namespace depot {

// Makes `prompt` the one that every connection asks for credentials from now on; it stays the
// caller's. With null, as at the beginning, no user can be asked: what would have to be asked fails
// as if prompting were off, which stays as it is for all other processes. Returns the one before.
CredentialsPrompt* InstallCredentialsPrompt(CredentialsPrompt* prompt);

// The client's entry points and the handle of one location's server: how it is opened, bound and
// ended, and how a failure is described. Borrows the location's record. Used by one thread at a
// time.
class LdapConnection : NotCopied, PromptingServer {
public:
    // No connection is kept for longer, in seconds.
    static constexpr std::uint32_t kLongestKeptConnection = 3600;

    explicit LdapConnection(CDepotPath& location);
    ~LdapConnection();

    // Connects to the server and binds as the location says. A failure is shown in a message box;
    // after a failed simple bind the user is asked for credentials, until the user gives up.
    // Credentials that failed are not tried again unasked. Any other failure leaves the connection
    // unusable: each later attempt fails with LDAP_SERVER_DOWN, until Acquire starts anew.
    Result Connect(const Credentials& credentials);

    // The same with what is known of the credentials, as a probe does it: asking for nothing. A
    // failure is not shown, is not recorded for other processes, and leaves the connection
    // unusable.
    Result ConnectQuietly();

    // Asks for credentials, unless they are known and no error is recorded for the server, and
    // connects with them. What was typed for a server beside this one is tried before. Fails with
    // LDAP_USER_CANCELLED when the user cancels (with a message box) or when there is something to
    // ask while prompting is off for the server (without one).
    Result PromptAndConnect();

    // Connects with the credentials of the location's record, or asks where it has none.
    Result Open();

    // Takes the connection for one operation: the one that an earlier operation left, unless the
    // server has ended it or the record names another log-on since, else one that Open makes.
    // `taken` is whether Release is due afterwards: it is not inside another operation, nor for a
    // connection that the caller has opened. An attempt that failed in an earlier call of the
    // interface, or where there is none, says nothing of this one.
    Result Acquire(bool& taken);
    // Makes the connection that Acquire is to take, where nothing has to be asked for that, without
    // showing anything. Fails where the server does not answer, or not that log-on; Acquire may
    // still succeed then.
    Result Reach();
    // Ends the operation. The connection stays open until the call of the interface ends, or is
    // closed at once where there is none.
    void Release();

    // Whether nothing was asked since a connection that was kept between calls was taken again: it
    // may turn out to be gone. Cleared by asking.
    bool TakeUnproven() { return std::exchange(isUnproven_, false); }
    // Replaces a connection that turned out to be gone, without showing anything. Fails with
    // LDAP_SERVER_DOWN where that is not possible.
    Result Replace();

    // Takes the open connection of another object, which was made for a copy of this one's record.
    void Adopt(LdapConnection& other);

    // Whether Open binds as ConnectQuietly does, without asking anything.
    bool OpensUnasked() const;

    // Makes sure that user name and password of a simple location are known. Returns whether to go
    // on, also when nothing had to be asked; false when the user cancelled or cannot be asked.
    // Only the former empties the record's password and turns prompting for the server off in every
    // process.
    bool PromptForCredentials();

    // Gives the connection up and leaves it unusable.
    void Disconnect();

    // Ends the connection, which can be opened again. Returns false only when the client could not
    // unbind.
    bool Close();

    // Drops the connection and the handles of failed binds without ending them, for a library that
    // is being taken out of the process: ending one takes the network. Returns whether there were
    // any.
    bool Leave();

    bool IsBound() const { return isBound_; }
    bool IsConnected() const { return isConnected_; }
    bool IsUsable() const { return isUsable_; }

    // The code as a result, with the text that the last error which any process saw at this server
    // has, else the code's own.
    Result Outcome(std::uint32_t code);
    // The same for a code that is recorded for all processes and, unless it is LDAP_SUCCESS, shown.
    Result Report(std::uint32_t code);
    // The text of such a result; empty where the system has none.
    std::string Text(std::uint32_t code);

    CDepotPath& Location() const { return location_; }
    SharedCredentials& Shared() { return shared_; }
    LDAP* Handle() const { return handle_.get(); }
    // The entry points through which the client is called.
    DirectoryClient& Client() { return client_; }
    // Those for listings in pages, bound on first need.
    PagingClient& Paging();
    // How long the answer to a request may take, in seconds.
    ULONG AnswerLimit() const;
    // Names the servers of the same depot (see ServerKeyOf) for which users log on as for this one.
    // What was typed for one of them is tried once, without showing anything, before the user is
    // asked for this one.
    void SetServersBeside(std::vector<std::string> keys) { serversBeside_ = std::move(keys); }
    // Has this connection ask `prompt` and not the installed one.
    void SetPrompt(CredentialsPrompt* prompt) { ownPrompt_ = prompt; }

private:
    friend class CallConnections;
    friend void CloseExpiredConnections();

    // What a connection was opened with.
    struct LogOn {
        std::string server;
        Digest credentials;
        std::uint32_t port = 0, authentication = 0, version = 0, security = 0, followReferrals = 0;
        friend bool operator==(const LogOn&, const LogOn&) = default;
    };

    void JoinCall();
    void LeaveCall();
    void EndCall();
    void TakeFromKept();
    bool CloseHandle();
    bool IsStillOpen() const;
    LogOn PresentLogOn() const;

    enum class PromptResult { kCancelled, kNobodyAsked, kNothingAsked, kConfirmed };

    CredentialsPrompt* Prompt() const;
    CredentialsPrompt* PromptUnlessOff();
    // A null `prompt` stands for a user who cannot be asked, a null `failed` for no bind so far.
    PromptResult AskForCredentials(CredentialsPrompt* prompt, const LogOnAttempt* failed);
    bool ConnectAsBeside();
    // Returns whether `attempt` holds credentials to go on with; else `failure` says why it ends.
    bool FindOtherCredentials(LogOnAttempt& attempt, Result& failure);

    std::string UserNameExample() override;
    std::string AskForUserNameExample();

    // `patience` is how long connecting may take, in seconds.
    std::uint32_t OpenHandle(const std::string& host, std::uint32_t patience);
    std::uint32_t OpenHandle(const std::string& host) {
        return OpenHandle(host, location_.connectTimeout);
    }
    std::uint32_t SetOptions();
    std::uint32_t ReachServer(std::uint32_t patience);
    std::uint32_t Secure();
    std::uint32_t Bind(const Credentials& credentials);
    void FinishBind();
    // Leaves the connection unusable for the rest of the call.
    void Fail();
    std::string TextOf(std::uint32_t code) const;

    CDepotPath& location_;
    DirectoryClient client_;
    std::optional<PagingClient> paging_;
    bool isBound_ = false;
    bool isConnected_ = false;
    bool isUsable_ = true;
    bool isIdle_ = false;      // open, and left by one operation for the next
    bool isUnproven_ = false;  // see TakeUnproven
    bool isKept_ = false;      // among the connections that are kept between calls
    LogOn logOn_;              // of the open connection
    CallConnections* call_ = nullptr;
    LdapConnection* nextOfCall_ = nullptr;
    LdapConnection* nextKept_ = nullptr;
    std::chrono::steady_clock::time_point keptUntil_;
    SharedCredentials shared_;
    std::optional<CredentialsPrompt*> ownPrompt_;
    std::optional<std::string> userNameExample_;  // once the server was asked for it
    std::optional<std::uint64_t> failedCall_;     // unusable since; nothing when given up for good
    std::uint64_t unreachedCall_ = 0;             // in which Reach failed
    std::uint64_t cancelledCall_ = 0;             // in which a user gave up waiting for the server
    std::vector<std::string> serversBeside_;
    std::vector<Digest> triedBeside_;  // what was typed there and is refused here
    // After the table, through which they are unbound.
    std::vector<UniqueLdap> replacedHandles_;
    UniqueLdap handle_;
};

}  // namespace depot
