// The credentials prompt that the user sees: a dialog of another component.
#pragma once

#include "directory/credentials_prompt.h"

namespace depot {

// Shows the dialog component "DepotBrowser.UserPasswordPromptDialog". Where it is not registered or
// cannot be created, the prompt counts as cancelled. What is typed and does not fit the ANSI code
// page is explained in a message box, and the dialog is shown again. In a process whose windows no
// person sees the event log gets the server's name instead; a quiet session's call
// (NoticeCollector) is not asked at all. No exception gets out.
//
// REQUIRES: COM is initialised on the calling thread.
class CredentialsDialog final : public CredentialsPrompt {
public:
    bool Show(Credentials& credentials) noexcept override;
    bool CanBeAnswered() const override;
};

}  // namespace depot
