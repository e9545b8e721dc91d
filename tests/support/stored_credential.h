// An entry of the user's credential store for the length of a test.
#pragma once

#include <gtest/gtest.h>

#include <string>

#include "platform/credential_store.h"

namespace depot::test {

class CredentialScope {
public:
    explicit CredentialScope(std::string target) : target_(std::move(target)) {
        DeleteCredential(target_);
    }
    ~CredentialScope() { DeleteCredential(target_); }
    CredentialScope(const CredentialScope&) = delete;
    CredentialScope& operator=(const CredentialScope&) = delete;

    void Store(const std::string& userName, const std::string& password,
               const std::string& server = {}) const {
        StoredCredential credential;
        credential.userName = userName;
        credential.password = password;
        credential.server = server;
        EXPECT_EQ(0u, WriteCredential(target_, credential));
    }
    const std::string& Target() const { return target_; }

private:
    const std::string target_;
};

}  // namespace depot::test
