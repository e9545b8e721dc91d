// A log-on while system calls fail: it succeeds or not, and leaves no connection that nothing uses.
#include "directory/connection_scope.h"
#include "faults/fault_series.h"
#include "support/directory_fixture.h"

namespace depot::test {
namespace {

class LogOnFaultsTest : public DirectoryFixture {
protected:
    // Whether the connection could be used; running out of memory is a failure as well. What a
    // refused bind leaves lives as long as its object, which ends with it here.
    bool Use() {
        try {
            bool used = false;
            {
                const ConnectionScope scope(items_->Connection());
                used = static_cast<bool>(scope);
            }
            if (!used) items_.reset();
            return used;
        } catch (const std::bad_alloc&) {
            return false;
        }
    }
    // `make` gives the object when there is none.
    void Run(const std::function<void()>& make, const std::function<void()>& prepare) {
        bool used = false;
        make();
        RunWithFaults({
                          .prepare = prepare,
                          .operate = [&] { used = Use(); },
                          .verify =
                              [&](std::optional<Fault> failing) {
                                  EXPECT_TRUE(used || failing);
                                  if (!items_) make();
                                  EXPECT_FALSE(items_->IsConnected());
                              },
                      },
                      kManyRuns);
    }

    FaultLayer layer_{GetModuleHandleA(nullptr)};
};

TEST_F(LogOnFaultsTest, KnownCredentialsLeaveNothingOpen) {
    Run([&] { Make(kEditor, kEditorPassword); },
        [&] {
            ForgetServer(server_.Port());
            location_->password = kEditorPassword;
        });
}

TEST_F(LogOnFaultsTest, WhatWasTypedForAServerBesideLeavesNothingOpen) {
    const DirectoryServer replica;
    const std::unique_ptr<CDepotPath> there = replica.Location().Clone();
    CLDAPItems other(there.get());
    const auto make = [&] {
        Make("", "");
        items_->Connection().SetServersBeside({ServerKey("127.0.0.1", replica.Port())});
        items_->Connection().SetPrompt(nullptr);
    };
    Run(make, [&] {
        ForgetServer(server_.Port());
        location_->username.clear();
        location_->password = "";
        other.SetUserName(kEditor);
        other.SetPassword(kEditorPassword);
    });
    ForgetServer(replica.Port());
}

}  // namespace
}  // namespace depot::test
