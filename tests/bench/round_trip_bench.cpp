// What users wait for whose server is at the end of a slow line.
#include <algorithm>
#include <chrono>
#include <cstdio>
#include <functional>
#include <string>
#include <vector>

#include "bench/benches.h"
#include "bench/comparison.h"
#include "bench/raw_directory.h"
#include "bench/raw_session.h"
#include "fileops/depot_file.h"
#include "manager/depot_list.h"
#include "support/directory_server.h"
#include "support/relay.h"
#include "support/scratch.h"

namespace depot::bench {
namespace {

using std::chrono::microseconds;

constexpr microseconds kRoundTrips[] = {microseconds(500), microseconds(10000),
                                        microseconds(50000)};
constexpr int kFiles = 200;
constexpr std::size_t kFileBytes = 1024;
// Operations that take no seconds are repeated.
constexpr int kRepetitions = 3;
constexpr double kMostToRepeat = 20;

std::wstring Wide(const std::string& text) {
    return std::wstring(text.begin(), text.end());
}

// A depot in a server of the measurement's own, which is reached through a relay.
class DistantDepot {
public:
    explicit DistantDepot(IDepotIntrApi* api) : api_(api) {
        DefineUserFolder();
        key_.Text("Far", "Path1", test::kSuffix);
        key_.Dword("Far", "Type1", kDirectoryLocation);
        key_.Text("Far", "Host1", "127.0.0.1");
        key_.Dword("Far", "Port1", relay.Port());
        key_.Text("Far", "Username1", test::kEditor);
        key_.Text("Far", "Password1", test::kEditorPassword);
        const RawDirectory raw(server_.Port());
        raw.AddFolder(DN("Sessions"), "Sessions");
        raw.Add("CN=a.kra," + DN("Sessions"), "a.kra", "[S]\r\nK=1\r\n");
        for (int number = 0; number < kFiles; ++number) {
            local_.MakeFile("f" + std::to_string(number) + ".kra", std::string(kFileBytes, 'x'));
        }
    }

    static std::string Path(const std::string& name) { return "<Far>\\" + name; }
    // A name that nothing has yet.
    std::string NewName() { return "t" + std::to_string(++names_); }

    // Makes a folder of many files without the relay; returns its name.
    std::string MakeFolder() {
        const std::string name = NewName();
        const RawDirectory raw(server_.Port());
        raw.AddFolder(DN(name), name);
        for (int number = 0; number < kFiles; ++number) {
            const std::string file = "f" + std::to_string(number) + ".kra";
            raw.Add("CN=" + file + "," + DN(name), file, std::string(kFileBytes, 'x'));
        }
        return name;
    }

    LONG_PTR Load() {
        LONG_PTR session = 0;
        Text path(Wide(Path("Sessions\\a.kra")).c_str());
        Require(api_->DPLoadFile(&session, path.Address()) == S_OK, "load");
        return session;
    }
    void Read(LONG_PTR session) {
        Text section(L"S"), key(L"K"), standard(L""), value;
        Require(api_->DPGetProfileString(session, section.Address(), key.Address(),
                                         standard.Address(), value.Address(), 100) == S_OK,
                "read");
    }
    LONG_PTR List() {
        LONG_PTR session = 0;
        LONG count = 0;
        Text path(Wide(Path("Sessions")).c_str()), extension(L".kra");
        Require(api_->DPFindInit(&session, path.Address(), extension.Address(), APP_SKEIN,
                                 &count) == S_OK,
                "list");
        return session;
    }
    void Change(LONG_PTR session) {
        Text section(L"S"), key(L"K"), value(Wide(NewName()).c_str());
        Require(api_->DPSetProfileString(session, section.Address(), key.Address(),
                                         value.Address()) == S_OK,
                "set");
        Require(api_->DPFlushFile(session) == S_OK, "flush");
    }
    void Rename(LONG_PTR session, const std::string& from, const std::string& to) {
        Text source(Wide(Path(from)).c_str()), target(Wide(Path(to)).c_str());
        Require(api_->DPRenameFile(session, source.Address(), target.Address()) == S_OK, "rename");
    }
    void Delete(LONG_PTR session, const std::string& name) {
        Text path(Wide(Path(name)).c_str());
        Require(api_->DPDeleteFile(session, path.Address()) == S_OK, "delete");
    }
    void End(LONG_PTR session) { api_->DPUnInitialize(session); }

    void Upload() { CopyTree(local_.Path(), Path(NewName()), true); }
    void Download(const std::string& name) { CopyTree(Path(name), copies_.At(NewName()), false); }

    test::Relay& Line() { return relay; }

private:
    static std::string DN(const std::string& name) { return "CN=" + name + "," + test::kSuffix; }

    static void CopyTree(const std::string& from, const std::string& to, bool up) {
        CDepots depots(kDepotsKey);
        CDepot& depot = *depots.At(0);
        Require(CopyFile(depot, from, to, up ? &depot : nullptr, false, nullptr) == 1, "copy");
    }

    IDepotIntrApi* api_;
    test::DirectoryServer server_{"global sizelimit unlimited"};
    test::Relay relay{server_.Port()};
    test::ScratchKey key_{HKEY_CURRENT_USER, kDepotsKey};
    test::ScratchFolder local_, copies_;
    int names_ = 0;
};

struct Operation {
    const char* name;
    double goal;
    // Prepares one run without the line's delay and returns what is measured.
    std::function<std::function<void()>()> prepare;
};

std::vector<Operation> Operations(DistantDepot& depot) {
    const auto inSession = [&](std::function<void(LONG_PTR)> operation) {
        return [&, operation] {
            const LONG_PTR session = depot.Load();
            return [&, operation, session] {
                operation(session);
                depot.End(session);
            };
        };
    };
    return {
        {"first read of a value", 4,
         [&] {
             return [&] {
                 const LONG_PTR session = depot.Load();
                 depot.Read(session);
                 depot.End(session);
             };
         }},
        {"first listing", 4, [&] { return [&] { depot.End(depot.List()); }; }},
        {"set and flush a value that was read", 2,
         inSession([&](LONG_PTR session) { depot.Change(session); })},
        {"upload 200 files of 1 KB", 10, [&] { return [&] { depot.Upload(); }; }},
        {"download 200 files of 1 KB", 10,
         [&] {
             const std::string name = depot.MakeFolder();
             return [&, name] { depot.Download(name); };
         }},
        {"delete 200 files of 1 KB", 10,
         [&] {
             const std::string name = depot.MakeFolder();
             return inSession([&, name](LONG_PTR session) { depot.Delete(session, name); })();
         }},
        {"rename a folder of 200 files", 5,
         [&] {
             const std::string name = depot.MakeFolder();
             return inSession(
                 [&, name](LONG_PTR session) { depot.Rename(session, name, depot.NewName()); })();
         }},
    };
}

struct Run {
    double microseconds;
    int roundTrips;
};

Run RunOnce(DistantDepot& depot, const Operation& operation, microseconds roundTrip) {
    depot.Line().HoldBack({});
    const std::function<void()> measured = operation.prepare();
    depot.Line().HoldBack(roundTrip / 2);
    depot.Line().Mark();
    const auto start = std::chrono::steady_clock::now();
    measured();
    const std::chrono::duration<double, std::micro> elapsed =
        std::chrono::steady_clock::now() - start;
    return {elapsed.count(), depot.Line().Counts().roundTrips};
}

void Measure(DistantDepot& depot, const Operation& operation) {
    TripRow row = {operation.name, operation.goal, 0, {}};
    for (const microseconds roundTrip : kRoundTrips) {
        Run least = RunOnce(depot, operation, roundTrip);
        for (int again = 1; again < kRepetitions && least.roundTrips <= kMostToRepeat; ++again) {
            const Run run = RunOnce(depot, operation, roundTrip);
            if (run.microseconds < least.microseconds) least = run;
        }
        row.counted = least.roundTrips;
        row.elapsed.push_back(least.microseconds / static_cast<double>(roundTrip.count()));
    }
    PrintTrips(row);
}

}  // namespace

void MeasureRoundTrips(IDepotIntrApi* api) {
    DistantDepot depot(api);
    PrintTripsHeader("Round trips: the elapsed time in round trips of 0.5, 10 and 50 ms");
    for (const Operation& operation : Operations(depot)) Measure(depot, operation);
}

}  // namespace depot::bench
