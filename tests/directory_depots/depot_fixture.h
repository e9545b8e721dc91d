// A depot in a directory, as its tests share it.
#pragma once

#include <optional>

#include "directory/call_connections.h"
#include "manager/depot_file_context.h"
#include "model/working_copy.h"
#include "support/directory_fixture.h"
#include "support/kept_seconds.h"
#include "support/scratch.h"
#include "support/working_files.h"

namespace depot::test {

// A directory depot named "Work" below the test's own folder, used with the editor's rights.
class DepotFixture : public DirectoryFixture {
protected:
    static constexpr char kKey[] = "Software\\DepotTests\\Directory";

    DepotFixture() { Define(server_.Port(), base_); }

    void Define(unsigned port, const std::string& base, const std::string& user = kEditor,
                const std::string& password = kEditorPassword) {
        ForgetServer(port);
        key_.Text("Work", "Path1", base);
        key_.Dword("Work", "Type1", kDirectoryLocation);
        key_.Text("Work", "Host1", "127.0.0.1");
        key_.Dword("Work", "Port1", port);
        key_.Dword("Work", "Authentication1", kSimpleAuthentication);
        key_.Text("Work", "Username1", user);
        key_.Text("Work", "Password1", password);
        if (KeptSeconds() > 0) {
            key_.Dword("Work", "KeepConnection1", KeptSeconds());
            // Without an interface above them the operations are no calls.
            if (!call_) call_.emplace();
        }
        depots_ = std::make_unique<CDepots>(kKey);
        work_ = depots_->At(0);
    }

    // Has the location chosen, with the one probe that this takes.
    void Choose() {
        ASSERT_NE("", work_->paths->GetActivePath());
        server_.Mark();
    }

    std::unique_ptr<DepotFileContext> Load(const std::string& name = "a.kra") {
        return std::make_unique<DepotFileContext>("<Work>\\" + name, *depots_);
    }

    // What a file holds, read through a connection of the test's own.
    std::string Stored(const std::string& name) { return Contents(Dn(name)); }

    CLDAPItems& Directory() { return *work_->DirectoryConnection(); }

    // Checks that exactly these bytes were recovered, and that the last box names their file.
    void ExpectRecovered(const std::string& bytes) {
        const std::vector<std::string> files = RecoveredFiles();
        ASSERT_EQ(1u, files.size());
        EXPECT_TRUE(bytes == FileBytes(files.front())) << files.front();
        ASSERT_FALSE(boxes_.Boxes().empty());
        EXPECT_THAT(boxes_.Boxes().back().text, testing::EndsWith(files.front()));
        EXPECT_EQ("Quillon", boxes_.Boxes().back().caption);
        EXPECT_TRUE(boxes_.Boxes().back().hasErrorIcon);
    }

    CleanWorkingFiles clean_;
    ScratchKey key_{HKEY_CURRENT_USER, kKey};
    std::unique_ptr<CDepots> depots_;
    CDepot* work_ = nullptr;
    std::optional<CallConnections> call_;
};

}  // namespace depot::test
