// A depot in a directory, and copies that are kept of its files.
#pragma once

#include <optional>
#include <span>
#include <string>
#include <string_view>

#include "directory/connection_scope.h"
#include "model/recovered_files.h"
#include "model/recovered_origins.h"
#include "offline/offline_location.h"
#include "platform/paths.h"
#include "platform/wide_text.h"
#include "support/directory_server.h"
#include "support/offline_files.h"
#include "support/results.h"
#include "support/scratch.h"
#include "support/working_files.h"

namespace depot::test {

inline constexpr char kKeptBase[] = "[Host]\r\nName=mail\r\n";
inline constexpr char kKeptOurs[] = "[Host]\r\nName=post\r\n";
inline constexpr char kKeptTheirs[] = "[Host]\r\nName=mail\r\nPort=22\r\n";
inline constexpr char kKeptBoth[] = "[Host]\r\nName=post\r\nPort=22\r\n";

// The depot "Dir" with a file "Sessions\office.kre", in a folder of the shared server. Nothing is
// kept before and after.
class KeptWorld {
public:
    // Defines the depot in the key of all depots.
    explicit KeptWorld(const ScratchKey& definitions) : definitions_(definitions) {
        ForgetServer(server.Port());
        SweepOrigins();
        Define(server.Port());
        server.AddFolder("Sessions", base);
        AddFile("office.kre", kKeptBase);
    }
    ~KeptWorld() {
        for (const std::string& path : RecoveredFiles()) DeleteFileA(path.c_str());
        SweepOrigins();
    }
    KeptWorld(const KeptWorld&) = delete;
    KeptWorld& operator=(const KeptWorld&) = delete;

    // Defines the depot, at that port of this machine.
    void Define(unsigned port) const {
        definitions_.Text("Dir", "Path1", base);
        definitions_.Dword("Dir", "Type1", 1);
        definitions_.Text("Dir", "Host1", "127.0.0.1");
        definitions_.Dword("Dir", "Port1", port);
        definitions_.Text("Dir", "Username1", kEditor);
        definitions_.Text("Dir", "Password1", kEditorPassword);
    }
    void AddFile(const std::string& utf8Name, const std::string& contents) const {
        server.AddFile(utf8Name, "cn=Sessions," + base, contents);
    }
    CDepotPath Location() const { return server.Location(base); }
    std::string Dn(const std::string& name = "office.kre") const {
        return "cn=" + name + ",cn=Sessions," + base;
    }
    static std::span<const std::uint8_t> BytesOf(std::string_view text) {
        return {reinterpret_cast<const std::uint8_t*>(text.data()), text.size()};
    }

    // Keeps bytes of an entry, as the component does, and returns the path of their file.
    static std::string KeepOf(const std::string& ours, const RecoveredOrigin& origin,
                              const std::string& name = "office.kre") {
        const std::string path = KeepRecovered(name, ours.data(), ours.size());
        NoteRecovered(path, origin);
        return path;
    }
    std::string Keep(const std::string& ours = kKeptOurs,
                     const std::string& name = "office.kre") const {
        const CDepotPath location = Location();
        const std::string dn = Dn(name);
        return KeepOf(ours,
                      {.location = &location,
                       .dn = dn,
                       .code = LDAP_INSUFFICIENT_RIGHTS,
                       .reason = "no rights",
                       .base = BytesOf(kKeptBase)},
                      name);
    }
    // Has an edit of the file wait for the server.
    void Queue(const std::string& ours = kKeptOurs) const {
        const CDepotPath location = Location();
        OfflineLocation waiting(location);
        const OfflineBytes base_ = {kKeptBase, kKeptBase + sizeof(kKeptBase) - 1};
        EXPECT_EQ(0u, waiting.Queue(Dn(), base_, {ours.begin(), ours.end()}));
    }

    // What the entry holds, read and stored past the depot.
    std::string Entry(const std::string& name = "office.kre") const {
        CDepotPath location = Location();
        CLDAPItems directory(&location);
        const ConnectionScope connection(directory, nullptr);
        FileBuffer buffer;
        if (!directory.Entries().ReadSeen(Dn(name), buffer)) return "(missing)";
        return {reinterpret_cast<const char*>(buffer.bytes.get()), buffer.length};
    }
    void StoreByOthers(const std::string& text) const {
        CDepotPath location = Location();
        CLDAPItems directory(&location);
        const ConnectionScope connection(directory, nullptr);
        const auto length = static_cast<std::uint32_t>(text.size());
        EXPECT_THAT(directory.Entries().Replace(Dn(), text.data(), length), IsDone());
    }
    void RemoveEntry() const { server.Apply("dn: " + Dn() + "\nchangetype: delete\n"); }

    // The record of a recovered file.
    static std::string RecordOf(const std::string& path) {
        return RecoveredFolder() + " records\\" + NamePart(path) + ".record";
    }
    // Whether a recovered file is still there, with what is known of it.
    static bool IsKept(const std::string& path) { return Exists(path) && Exists(RecordOf(path)); }

    DirectoryServer& server = SharedServer();
    const std::string base = NewFolder();

private:
    const ScratchKey& definitions_;
    const CleanWorkingFiles cleanFiles_;
    const CleanOfflineFiles cleanOffline_;
};

}  // namespace depot::test
