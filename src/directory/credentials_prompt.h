// How the directory layer asks the user for credentials without knowing the dialog.
#pragma once

#include <cstdint>
#include <string>

#include "platform/secret_text.h"

namespace depot {

// The server to which a prompt's credentials are sent.
class PromptingServer {
public:
    // Returns an example of a user name in the form that the server wants, in the ANSI code page;
    // empty where that is not known. The server is asked for it, which can take some seconds.
    virtual std::string UserNameExample() = 0;

protected:
    ~PromptingServer() = default;
};

// What a location's server is asked with; texts are in the ANSI code page.
struct Credentials {
    std::string server;
    std::string userName;
    SecretText password;
    // For a prompt: the directory's code with which the log-on before it failed; 0 for none.
    std::uint32_t failure = 0;
    // For a prompt: whether they are sent over a secured connection, and whether the user's
    // credential store has a place for them, which is used once the server has accepted them.
    bool isSecured = false;
    bool mayBeStored = false;
    bool isToBeStored = false;
    // For a prompt: whom to ask about the server, until Show returns; null where that is nobody.
    PromptingServer* asking = nullptr;
};

// Implemented by whoever can show a dialog and handed to the directory layer.
class CredentialsPrompt {
public:
    virtual ~CredentialsPrompt() = default;

    // Shows the server and what is known of the user name and the password, and waits for the user.
    // Returns true when the user confirmed, with both texts replaced by what was typed; false, with
    // `credentials` as they were, when the user cancelled or nothing could be shown.
    virtual bool Show(Credentials& credentials) = 0;

    // Whether a prompt that was cancelled turns prompting for the server off in every process,
    // where other credentials might have helped.
    virtual bool CancelIsForAll() const { return true; }

    // Whether a person can answer. Where none can, Show only reports that and returns false, and it
    // counts as if there had been no prompt.
    virtual bool CanBeAnswered() const { return true; }
};

}  // namespace depot
