// What is known of one location's server: by the location's record, and by all processes together.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "config/depot_path.h"
#include "directory/credentials_prompt.h"
#include "platform/digest.h"
#include "platform/directory_info_block.h"

namespace depot {

// A bind that failed.
struct LogOnAttempt {
    Credentials credentials;
    bool isUnasked = false;  // follows a failed one without anything having been shown
    std::uint32_t code = 0;  // of the failure
};

// The user name and the password of a location, in its record and in the block that processes
// share about its server, and the rest of that block: the last error that any process saw and
// whether prompting is off. Borrows the record. Where the block cannot be had, it is as if it were
// empty.
class SharedCredentials {
public:
    explicit SharedCredentials(CDepotPath& location);

    // Store a text in the location's record and, cut to its 260 bytes, in the shared block.
    void SetUserName(const std::string& userName);
    void SetPassword(const std::string& password);
    // Return what is in the shared block.
    std::string SharedUserName();
    SecretText SharedPassword();

    // The record's own: its user name and password or, where it has no password and names a target
    // of the user's credential store, the pair that is stored there for this server.
    Credentials Own() const;
    // The same, or the shared pair where that is what the record lacks: one was typed with the
    // other, and for the user whom the record names.
    Credentials Paired();
    // The record's own with each missing part filled from the shared block, as the prompt does it.
    // It may pair one user's name with another one's password, which is tried once.
    Credentials Known();
    // Returns the pair that was typed for another server, by its key, where the record has no
    // password and names nobody else.
    std::optional<Credentials> TypedFor(const std::string& serverKey) const;
    // Stores them in the record alone.
    void KeepInRecord(const Credentials& credentials);
    // Takes what filled the record out of it again: it was refused.
    void TakeFillingBack();
    // Whether the user's credential store has a place for what is typed for the location.
    bool MayBeStored() const { return !location_.credentialTarget.empty(); }
    // Has what was typed be stored there as soon as a server has accepted it; a later call without
    // it takes that back.
    void StoreOnceAccepted(bool store) { isToBeStored_ = store; }
    // A server has accepted the record's credentials.
    void Accepted();
    // Empties the record's password, looks for no stored one any more, and stores none.
    void ForgetPassword();
    // Returns the credentials that can be tried without asking, if there are any; a null `failed`
    // stands for no bind so far.
    std::optional<Credentials> Untried(const Credentials& known, const LogOnAttempt* failed);

    bool PromptingIsOff();
    void TurnPromptingOff();

    void SetLastError(std::uint32_t code);
    // Returns the last error that any process saw, `code` where there is none.
    std::uint32_t LastErrorOr(std::uint32_t code);
    // The same from the view that is open already, where one is.
    std::uint32_t SeenErrorOr(std::uint32_t code);

    DirectoryInfoBlock& Block() { return info_; }

private:
    // Whether these complete a record, which holds `own`, with what was typed for somebody else.
    bool IsFilling(const Credentials& credentials, const Credentials& own);

    CDepotPath& location_;
    DirectoryInfoBlock info_;
    bool ignoresStored_ = false;
    // What the record held before it was filled from both sources.
    std::optional<Credentials> beforeFilling_;
    bool fillingFailed_ = false;
    bool isToBeStored_ = false;
};

// The key under which processes share what they know of the location's server. What was typed for a
// secured location serves no other one.
std::string ServerKeyOf(const LocationSettings& location);

// Whether what was typed for the one location may be sent to the other one's server as well.
bool AreSecuredAlike(const LocationSettings& one, const LocationSettings& other);

// Names a user name with its password without holding either.
Digest DigestOf(const Credentials& credentials);

// Whether there are a user name and a password.
bool IsComplete(const Credentials& credentials);

}  // namespace depot
