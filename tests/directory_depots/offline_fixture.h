// A directory depot that is kept for the time when its server is away, with one file in it.
#pragma once

#include "directory/connection_scope.h"
#include "directory_depots/depot_fixture.h"
#include "fileops/depot_file.h"
#include "support/offline_files.h"
#include "support/results.h"

namespace depot::test {

inline constexpr char kOld[] = "[S]\r\nK=old\r\nL=old\r\n";

class OfflineTest : public DepotFixture {
protected:
    OfflineTest() {
        key_.Dword("Work", "Offline1", 1);
        Define(own_.Port(), kSuffix);
        own_.AddFile("a.kra", kSuffix, kOld);
    }

    // A new session, which knows what the registry and the disk say.
    void Restart(DWORD detectConflicts = 0) {
        key_.Dword("Work", "DetectConflicts1", detectConflicts);
        Define(own_.Port(), kSuffix);
    }
    void Away() { own_.Stop(); }
    void Back() { own_.Continue(); }

    bool Edit(const std::string& value, const std::string& key = "K") {
        const auto file = Load();
        file->WriteString("S", key, value);
        return file->Release();
    }
    std::string Value(const std::string& key = "K") {
        return Load()->ReadString("S", key, "(none)", 100);
    }
    // What the server has, read and stored past the depot.
    std::string Entry(const std::string& name = "a.kra") {
        CDepotPath location = own_.Location();
        CLDAPItems directory(&location);
        const ConnectionScope connection(directory, nullptr);
        FileBuffer buffer;
        if (!directory.Entries().Read(DnOf(name), buffer)) return "(missing)";
        return {reinterpret_cast<const char*>(buffer.bytes.get()), buffer.length};
    }
    void StoreByOthers(const std::string& contents) {
        CDepotPath location = own_.Location();
        CLDAPItems directory(&location);
        const ConnectionScope connection(directory, nullptr);
        EXPECT_THAT(directory.Entries().Replace(DnOf("a.kra"), contents.data(),
                                                static_cast<std::uint32_t>(contents.size())),
                    IsDone());
    }
    static std::string DnOf(const std::string& name) { return "cn=" + name + "," + kSuffix; }
    int Exists(const std::string& name) { return FileExists(*work_, "<Work>\\" + name); }

    CleanOfflineFiles cleanKept_;
    DirectoryServer own_;
};

}  // namespace depot::test
