// A user who answers the credentials prompt as a test says.
#pragma once

#include <deque>
#include <optional>
#include <vector>

#include "directory/credentials_prompt.h"

namespace depot::test {

// Answers with the next entry of `answers`, nothing being a cancel; then cancels for ever.
class ScriptedPrompt : public CredentialsPrompt {
public:
    bool Show(Credentials& credentials) override {
        shown.push_back(credentials);
        if (showsExamples && credentials.asking != nullptr) {
            examples.push_back(credentials.asking->UserNameExample());
        }
        if (answers.empty()) return false;
        const std::optional<Credentials> answer = answers.front();
        answers.pop_front();
        if (!answer) return false;
        credentials.userName = answer->userName;
        credentials.password = answer->password;
        credentials.isToBeStored = answer->isToBeStored;
        return true;
    }

    void Type(const std::string& userName, const std::string& password) {
        answers.push_back(Credentials{{}, userName, password});
    }

    std::vector<Credentials> shown;
    bool showsExamples = false;
    std::vector<std::string> examples;  // of the prompts that could be given one
    std::deque<std::optional<Credentials>> answers;
};

}  // namespace depot::test
