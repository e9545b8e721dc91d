#include <string>

#include "bench/benches.h"
#include "bench/comparison.h"
#include "bench/raw_directory.h"
#include "bench/raw_session.h"
#include "config/profile_merge.h"
#include "manager/depot_file_context.h"
#include "model/offline_edits.h"
#include "support/directory_server.h"
#include "support/offline_files.h"
#include "support/scratch.h"

namespace depot::bench {
namespace {

constexpr double kOfflineGoal = 1.10;
constexpr int kLoads = 20;
constexpr int kEdits = 1000;
constexpr char kName[] = "20 KB.kra";

// The same folder as two depots, of which one is kept.
class TwoDepots {
public:
    TwoDepots() {
        DefineUserFolder();
        Define("Kept", 1);
        Define("Plain", 0);
        server_.AddFile(kName, test::kSuffix, std::string(20 * 1024, 'x'));
    }

    test::DirectoryServer& Server() { return server_; }

private:
    void Define(const char* name, DWORD offline) {
        key_.Text(name, "Path1", test::kSuffix);
        key_.Dword(name, "Type1", kDirectoryLocation);
        key_.Text(name, "Host1", "127.0.0.1");
        key_.Dword(name, "Port1", server_.Port());
        key_.Text(name, "Username1", test::kEditor);
        key_.Text(name, "Password1", test::kEditorPassword);
        key_.Dword(name, "Offline1", offline);
    }

    test::DirectoryServer server_;
    test::ScratchKey key_{HKEY_CURRENT_USER, kDepotsKey};
};

// Each edit leaves other bytes, which have to be kept as well.
void LoadAndRelease(const std::string& depot, CDepots& depots, bool changed) {
    static int edits = 0;
    for (int load = 0; load < kLoads; ++load) {
        DepotFileContext file("<" + depot + ">\\" + kName, depots);
        if (changed) file.WriteString("Section", "Edit", std::to_string(++edits));
        Require(file.Release(), "release");
    }
}

void MeasureKeeping(CDepots& depots) {
    for (const bool changed : {false, true}) {
        Compare(
            std::string("load and release 20 KB") + (changed ? ", changed, " : ", ") +
                std::to_string(kLoads) + " times, kept",
            kOfflineGoal, [&] { LoadAndRelease("Kept", depots, changed); },
            [&] { LoadAndRelease("Plain", depots, changed); });
    }
}

// A profile of about one megabyte.
std::string LargeProfile(int sections) {
    std::string text;
    for (int section = 0; section < sections; ++section) {
        text += "[Section " + std::to_string(section) + "]\r\n";
        for (int key = 0; key < 30; ++key) {
            text += "Setting number " + std::to_string(key) + "=some text of it\r\n";
        }
        text += "\r\n";
    }
    return text;
}

void MeasureMerge() {
    const std::string base = LargeProfile(850);
    std::string theirs = base, ours = base;
    theirs.replace(theirs.find("some text"), 9, "theirs");
    ours.replace(ours.rfind("some text"), 9, "ours");
    PrintTime("merge two profiles of " + std::to_string(base.size() / 1024) + " KB", [&] {
        Require(MergeProfiles({base, theirs, ours})->conflicts.empty(), "merge");
    });
}

void MeasureQueue(test::DirectoryServer& server) {
    CDepotPath location = server.Location();
    location.offline = 1;
    CLDAPItems directory(&location);
    const std::string text = "[S]\r\nK=old\r\n";
    const OfflineBytes base(text.begin(), text.end()), bytes(text.rbegin(), text.rend());
    OfflineLocation kept(location);
    for (int edit = 0; edit < kEdits; ++edit) {
        const std::string name = "e" + std::to_string(edit) + ".kra";
        server.AddFile(name, test::kSuffix, text);
        Require(kept.Queue("cn=" + name + "," + test::kSuffix, base, bytes) == ERROR_SUCCESS,
                "queue");
    }
    server.Mark();
    const ULONGLONG start = GetTickCount64();
    StoreWaitingEdits(directory, kept.Folder());
    const ULONGLONG elapsed = GetTickCount64() - start;
    Require(!kept.Folder().HasEdits(), "store");
    std::printf("%-44s %llu ms, %d searches and %d modifications in windows of %zu\n",
                "1,000 waiting edits stored", elapsed, server.Counts().searches,
                server.Counts().modifications, EntryStore::kWindow);
}

}  // namespace

void MeasureApart() {
    const test::CleanOfflineFiles clean;
    TwoDepots two;
    CDepots depots(kDepotsKey);
    PrintHeader("Locations that are kept: against the same that are not");
    MeasureKeeping(depots);
    MeasureMerge();
    MeasureQueue(two.Server());
}

}  // namespace depot::bench
