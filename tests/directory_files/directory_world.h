// A directory depot with a folder of its own on the shared server.
#pragma once

#include <memory>
#include <optional>
#include <string>

#include "directory/call_connections.h"
#include "manager/depot_world.h"
#include "support/directory_fixture.h"
#include "support/kept_seconds.h"

namespace depot::test {

// A directory depot named "Work" over the test's own folder, its location chosen already, beside a
// folder depot named "Home".
class DirectoryWorld : public DirectoryPlace, public DepotWorld {
public:
    DirectoryWorld() {
        EXPECT_EQ(base + "\\", work.paths->GetActivePath());
        server.Mark();
        // Without an interface above them the operations are no calls.
        if (KeptSeconds() > 0) call_.emplace();
    }

    // Appends a depot with a copy of that location.
    CDepot& AddOf(const CDepotPath& original, const std::string& name) {
        auto depot = std::make_unique<CDepot>(&depots);
        depot->name = name;
        auto copy = original.Clone();
        copy->owner = depot->paths.get();
        depot->paths->Append(std::move(copy));
        CDepot& added = *depot;
        depots.Add(depot.release(), false);
        return added;
    }
    CLDAPItems& Directory() { return *work.DirectoryConnection(); }

    CDepot& home = Add("Home", "Home", "h");
    CDepot& work = AddOf(server.Location(base), "Work");

private:
    std::optional<CallConnections> call_;
};

// Has the server refuse to rename folders that hold entries, as some do.
inline void RefuseTreeRenames(CLDAPItems& directory) {
    static const DirectoryClient genuine = directory.Client();
    directory.Client().ldap_rename_ext_s =
        [](LDAP* connection, const PCHAR dn, const PCHAR name, const PCHAR parent, INT deletes,
           PLDAPControlA* server, PLDAPControlA* client) -> ULONG {
        LDAPMessage* found = nullptr;
        char filter[] = "(objectClass=*)", none[] = "1.1";
        char* attributes[] = {none, nullptr};
        genuine.ldap_search_s(connection, dn, LDAP_SCOPE_ONELEVEL, filter, attributes, 0, &found);
        const bool isLeaf = found == nullptr || genuine.ldap_count_entries(connection, found) == 0;
        if (found != nullptr) genuine.ldap_msgfree(found);
        return isLeaf ? genuine.ldap_rename_ext_s(connection, dn, name, parent, deletes, server,
                                                  client)
                      : ULONG{LDAP_NOT_ALLOWED_ON_NONLEAF};
    };
}

// Trees in both depots.
class DirectoryWorldTest : public testing::Test {
protected:
    // The name of an entry below the base, from the deepest component to the highest.
    std::string DN(const std::string& components) const { return components + "," + base_; }
    CLDAPItems& Directory() { return world_.Directory(); }
    std::string Contents(const std::string& dn) { return world_.Contents(dn); }
    bool Holds(const std::string& dn) { return world_.Holds(dn); }

    std::string At(const std::string& name) const { return world_.folder.At(name); }
    std::string Make(const std::string& name, const std::string& bytes) {
        return world_.folder.MakeFile(name, bytes);
    }
    // A local tree of two files and one subfolder.
    std::string MakeTree() {
        world_.folder.MakeFolder("tree\\sub");
        Make("tree\\a.kra", "1");
        Make("tree\\sub\\b.kra", "2");
        return At("tree");
    }
    // The same as entries.
    std::string AddTree(const std::string& name) {
        server_.AddFolder(name, base_);
        const std::string tree = DN("cn=" + name);
        server_.AddFile("a.kra", tree, "1");
        server_.AddFolder("sub", tree);
        server_.AddFile("b.kra", "cn=sub," + tree, "2");
        return tree;
    }
    // Three files whose names no local file may have.
    void AddHostileEntries(const std::string& dn) {
        server_.Apply("dn: cn=..\\5C..\\5Cx.kra," + dn +
                      "\nobjectClass: quillonFileBinary\ncn: ..\\..\\x.kra\n"
                      "quillonFileContentsBinary: x\n\n");
        server_.AddFile("C:x.kra", dn, "x");
        server_.AddFile("CON", dn, "x");
    }
    // Two files that are one in the ANSI code page, and so to the file system.
    void AddFilesOfOneLocalName(const std::string& dn) {
        server_.AddFile("L.kra", dn, "plain");
        server_.Apply("dn: cn=other.kra," + dn +
                      "\nobjectClass: quillonFileBinary\ncn: L.kra\ncn: other.kra\n"
                      "quillonFileContentsBinary: stroke\n\n");
    }
    // A file that is named like a folder, and a folder with a file that is named like a file.
    void AddUnusualNames(const std::string& dn) {
        server_.AddFile("README", dn, "3");
        server_.AddFolder("v1.2", dn);
        server_.AddFile("c.kra", "cn=v1.2," + dn, "4");
    }
    void ExpectTree(const std::string& dn) {
        EXPECT_EQ("1", Contents("cn=a.kra," + dn));
        EXPECT_EQ("2", Contents("cn=b.kra,cn=sub," + dn));
    }
    void ExpectFailure(std::uint32_t code) {
        EXPECT_EQ(code, Directory().LastError());
        EXPECT_EQ(MessageFor(code), error_);
    }
    void ExpectUnseen() {
        EXPECT_EQ(std::uint32_t{LDAP_NO_SUCH_ATTRIBUTE}, Directory().LastError());
        EXPECT_EQ(kUnseenContentsText, error_);
    }
    OperationCounts Counts() { return server_.Counts(); }

    DirectoryWorld world_;
    DirectoryServer& server_ = world_.server;
    const std::string& base_ = world_.base;
    CDepot* const work_ = &world_.work;
    CDepot& home_ = world_.home;
    std::string error_ = "junk";
};

}  // namespace depot::test
