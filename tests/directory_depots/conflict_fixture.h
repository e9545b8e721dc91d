// A depot whose file someone else stores meanwhile.
#pragma once

#include <memory>
#include <string>

#include "directory/connection_scope.h"
#include "directory_depots/depot_fixture.h"
#include "support/results.h"

namespace depot::test {

// Someone who stores another version just before a change reaches the server.
struct OtherEditor {
    DirectoryServer* server = nullptr;
    std::string dn;
    int changesBefore = 0;  // that reach it undisturbed
    decltype(DirectoryClient::ldap_modify_s) plain = nullptr;
    decltype(DirectoryClient::ldap_modify_ext_s) conditional = nullptr;

    void Store() {
        if (changesBefore-- > 0) return;
        server->Apply("dn: " + dn +
                      "\nchangetype: modify\nreplace: quillonFileContentsBinary\n"
                      "quillonFileContentsBinary: theirs\n");
    }
};
inline OtherEditor other;

inline ULONG LDAPAPI StoreThenModify(LDAP* connection, char* dn, LDAPModA** changes) {
    other.Store();
    return other.plain(connection, dn, changes);
}

inline ULONG LDAPAPI StoreThenModifyIf(LDAP* connection, char* dn, LDAPModA** changes,
                                       LDAPControlA** server, LDAPControlA** client) {
    other.Store();
    return other.conditional(connection, dn, changes, server, client);
}

class ConflictFixture : public DepotFixture {
protected:
    ConflictFixture() { Use(server_, base_); }

    // Has the depot on that server detect conflicts.
    void Use(DirectoryServer& server, const std::string& base, DWORD setting = 1) {
        key_.Dword("Work", "DetectConflicts1", setting);
        Define(server.Port(), base);
        place_ = &server;
        folder_ = base;
    }

    std::string Entry() const { return "cn=a.kra," + folder_; }

    std::unique_ptr<DepotFileContext> LoadChanged() {
        auto file = Load();
        file->WriteString("S", "K", "new");
        return file;
    }

    void Overwrite(const std::string& bytes) {
        const ConnectionScope connection(Directory(), nullptr);
        EXPECT_THAT(Directory().ReplaceFileContents(Entry(), bytes.data(),
                                                    static_cast<std::uint32_t>(bytes.size())),
                    IsDone());
    }

    std::string Stored() {
        FileBuffer buffer;
        const ConnectionScope connection(Directory(), nullptr);
        EXPECT_THAT(Directory().ReadFileContents(Entry(), buffer), IsDone());
        return buffer.bytes
                   ? std::string(reinterpret_cast<const char*>(buffer.bytes.get()), buffer.length)
                   : "(none)";
    }

    // Has someone store another version between the test and the change.
    void LetSomeoneStoreBetween(int changesBefore = 0) {
        DirectoryClient& client = Directory().Client();
        other = {place_, Entry(), changesBefore, client.ldap_modify_s, client.ldap_modify_ext_s};
        client.ldap_modify_s = &StoreThenModify;
        client.ldap_modify_ext_s = &StoreThenModifyIf;
    }

    DirectoryServer* place_ = nullptr;
    std::string folder_;
};

}  // namespace depot::test
