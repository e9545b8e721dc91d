// A world with a depot in a directory and copies that are kept of its files.
#pragma once

#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "depotctl/directory_tool.h"
#include "directory/connection_scope.h"
#include "model/recovered_files.h"
#include "model/recovered_origins.h"
#include "offline/offline_location.h"
#include "platform/local_file.h"
#include "platform/paths.h"
#include "platform/wide_text.h"
#include "support/offline_files.h"
#include "support/results.h"
#include "support/working_files.h"

namespace depot::test {

inline constexpr char kBase[] = "[Host]\r\nName=mail\r\n";
inline constexpr char kOurs[] = "[Host]\r\nName=post\r\n";
inline constexpr char kTheirs[] = "[Host]\r\nName=mail\r\nPort=22\r\n";

inline std::span<const std::uint8_t> BytesOf(std::string_view text) {
    return {reinterpret_cast<const std::uint8_t*>(text.data()), text.size()};
}

// The record of a recovered file.
inline std::string RecordOf(const std::string& name) {
    return RecoveredFolder() + " records\\" + name + ".record";
}

class RecoveredTest : public DirectoryToolTest {
protected:
    RecoveredTest() { SweepOrigins(); }
    ~RecoveredTest() override {
        for (const std::string& path : RecoveredFiles()) DeleteFileA(path.c_str());
        SweepOrigins();
    }

    // A location of the depot "Dir", without its depot.
    CDepotPath Location() const { return dir_.server.Location(dir_.base); }
    std::string Dn(const std::string& name = "office.kre") const {
        return "cn=" + name + ",cn=Sessions," + dir_.base;
    }

    // Keeps bytes of an entry, as the component does, and returns the name of their file.
    static std::string KeepOf(const std::string& ours, const RecoveredOrigin& origin,
                              const std::string& name = "office.kre") {
        const std::string path = KeepRecovered(name, ours.data(), ours.size());
        NoteRecovered(path, origin);
        return NamePart(path);
    }
    std::string Keep(const std::string& ours = kOurs) const {
        const CDepotPath location = Location();
        const std::string dn = Dn();
        return KeepOf(ours, {.location = &location,
                             .dn = dn,
                             .code = LDAP_INSUFFICIENT_RIGHTS,
                             .reason = "no rights",
                             .base = BytesOf(kBase)});
    }
    // One that an ended program left.
    std::string KeepWithoutBase() const {
        const std::string server = "127.0.0.1:" + std::to_string(dir_.server.Port());
        const std::string dn = Dn();
        return KeepOf(kOurs, {.server = server, .dn = dn, .reason = "it ended"});
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
    void RemoveEntry() const { dir_.server.Apply("dn: " + Dn() + "\nchangetype: delete\n"); }

    static nlohmann::json List(bool checks = false) {
        std::vector<std::string> arguments = {"recovered", "--json"};
        if (checks) arguments.emplace_back("--check");
        const ToolRun run = RunTool(arguments);
        EXPECT_EQ(ExitCode::kDone, run.exitCode) << run.errors;
        return run.Json();
    }
    static std::string Now() { return List(true)[0].value("now", "(none)"); }
    static ToolRun Restore(const std::string& name, std::vector<std::string> options = {}) {
        options.insert(options.begin(), {"recovered", "restore", name});
        return RunTool(options);
    }
    // Whether the copy is still there, with what is known of it.
    static bool IsKept(const std::string& name) {
        return Exists(RecoveredFolder() + "\\" + name) && Exists(RecordOf(name));
    }
    void ExpectRefused(const ToolRun& run, const std::string& text, const std::string& name,
                       const std::string& entry) const {
        EXPECT_EQ(ExitCode::kRefused, run.exitCode);
        EXPECT_THAT(run.errors, testing::HasSubstr(text));
        EXPECT_TRUE(IsKept(name));
        EXPECT_EQ(entry, Entry());
    }

    CleanWorkingFiles cleanFiles_;
    CleanOfflineFiles cleanOffline_;
};

}  // namespace depot::test
