// A depot in a directory, as its tests share it.
#pragma once

#include <optional>

#include "directory/call_connections.h"
#include "directory/connection_scope.h"
#include "manager/depot_file_context.h"
#include "model/working_copy.h"
#include "support/directory_fixture.h"
#include "support/kept_seconds.h"
#include "support/scratch.h"
#include "support/working_files.h"

namespace depot::test {

// A directory depot named "Work" below the test's own folder, used with the editor's rights.
class DepotFixture : public testing::Test {
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
    // Defines it on that server, where it detects conflicts.
    void Use(const DirectoryServer& server, const std::string& base, DWORD setting = 1) {
        key_.Dword("Work", "DetectConflicts1", setting);
        Define(server.Port(), base);
    }

    // Has the location chosen, with the one probe that this takes.
    void Choose() {
        ASSERT_NE("", work_->paths->GetActivePath());
        server_.Mark();
    }

    std::unique_ptr<DepotFileContext> Load(const std::string& name = "a.kra") {
        return std::make_unique<DepotFileContext>("<Work>\\" + name, *depots_);
    }
    std::unique_ptr<DepotFileContext> LoadChanged(const std::string& name = "a.kra") {
        auto file = Load(name);
        file->WriteString("S", "K", "new");
        return file;
    }

    // What a file holds, read through a connection of the test's own.
    std::string Stored(const std::string& name) { return place_.Contents(Dn(name)); }

    CLDAPItems& Directory() { return *work_->DirectoryConnection(); }

    // The entry of "a.kra" where the depot is defined, by its own connection: what it holds, and
    // another version that someone else stores.
    std::string Entry() const { return "cn=a.kra," + work_->paths->At(0)->path; }
    std::string Stored() {
        FileBuffer buffer;
        const ConnectionScope connection(Directory(), nullptr);
        EXPECT_THAT(Directory().ReadFileContents(Entry(), buffer), IsDone());
        return buffer.bytes
                   ? std::string(reinterpret_cast<const char*>(buffer.bytes.get()), buffer.length)
                   : "(none)";
    }
    void Overwrite(const std::string& bytes) {
        const ConnectionScope connection(Directory(), nullptr);
        EXPECT_THAT(Directory().ReplaceFileContents(Entry(), bytes.data(),
                                                    static_cast<std::uint32_t>(bytes.size())),
                    IsDone());
    }

    CLDAPItems& Connected() { return place_.Connected(); }
    std::string Dn(const std::string& name) const { return place_.Dn(name); }

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

    DirectoryPlace place_;
    DirectoryServer& server_ = place_.server;
    const std::string& base_ = place_.base;
    BoxLog& boxes_ = place_.boxes;
    ScriptedPrompt& prompt_ = place_.prompt;
    std::string text_ = "junk";
    CleanWorkingFiles clean_;
    ScratchKey key_{HKEY_CURRENT_USER, kKey};
    std::unique_ptr<CDepots> depots_;
    CDepot* work_ = nullptr;
    std::optional<CallConnections> call_;
};

}  // namespace depot::test
