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

    // The contents of a file entry; the text "(missing)" when there is none.
    std::string Contents(const std::string& dn) {
        FileBuffer buffer;
        if (Connected().ReadFileContents(dn, buffer) == 0) return "(missing)";
        return std::string(reinterpret_cast<const char*>(buffer.bytes.get()), buffer.length);
    }
    bool Holds(const std::string& dn) { return Connected().FindEntry(dn) == LDAP_SUCCESS; }

    DepotWorld world_;
    CDepot* work_ = nullptr;
    CDepot& home_ = world_.Add("Home", "Home", "h");
};

}  // namespace depot::test
