// A directory depot with a folder of its own on the shared server.
#pragma once

#include <memory>
#include <string>

#include "manager/depot_world.h"
#include "support/directory_fixture.h"

namespace depot::test {

// A directory depot named "Work" over the test's own folder, its location chosen already, beside a
// folder depot named "Home".
class DirectoryWorldTest : public DirectoryFixture {
protected:
    DirectoryWorldTest() {
        CDepotPath location = server_.Location(base_);
        auto depot = std::make_unique<CDepot>(&world_.depots);
        depot->name = "Work";
        auto copy = location.Clone();
        copy->owner = depot->paths.get();
        depot->paths->Append(std::move(copy));
        work_ = depot.get();
        world_.depots.Add(depot.release(), false);
        EXPECT_EQ(base_ + "\\", work_->paths->GetActivePath());
        server_.Mark();
    }

    // The name of an entry below the base, from the deepest component to the highest.
    std::string DN(const std::string& components) const { return components + "," + base_; }
    CLDAPItems& Directory() { return *work_->DirectoryConnection(); }

    // Has the server refuse to rename folders that hold entries, as some do.
    static void RefuseTreeRenames(CLDAPItems& directory) {
        static const DirectoryClient genuine = directory.Client();
        directory.Client().ldap_rename_ext_s =
            [](LDAP* connection, const PCHAR dn, const PCHAR name, const PCHAR parent, INT deletes,
               PLDAPControlA* server, PLDAPControlA* client) -> ULONG {
            LDAPMessage* found = nullptr;
            char filter[] = "(objectClass=*)", none[] = "1.1";
            char* attributes[] = {none, nullptr};
            genuine.ldap_search_s(connection, dn, LDAP_SCOPE_ONELEVEL, filter, attributes, 0,
                                  &found);
            const bool isLeaf =
                found == nullptr || genuine.ldap_count_entries(connection, found) == 0;
            if (found != nullptr) genuine.ldap_msgfree(found);
            return isLeaf ? genuine.ldap_rename_ext_s(connection, dn, name, parent, deletes, server,
                                                      client)
                          : ULONG{LDAP_NOT_ALLOWED_ON_NONLEAF};
        };
    }

    // The contents of a file entry; the text "(missing)" when there is none.
    std::string Contents(const std::string& dn) {
        FileBuffer buffer;
        if (Connected().ReadFileContents(dn, buffer) == 0) return "(missing)";
        return std::string(reinterpret_cast<const char*>(buffer.bytes.get()), buffer.length);
    }
    bool Holds(const std::string& dn) {
        return CodeOf(Connected().Entries().Find(dn)) == LDAP_SUCCESS;
    }

    DepotWorld world_;
    CDepot* work_ = nullptr;
    CDepot& home_ = world_.Add("Home", "Home", "h");
};

}  // namespace depot::test
