#include <cstdio>
#include <string>
#include <vector>

#include "bench/benches.h"
#include "bench/comparison.h"
#include "bench/raw_directory.h"
#include "bench/raw_session.h"
#include "manager/depot_file_context.h"
#include "support/directory_server.h"
#include "support/scratch.h"

namespace depot::bench {
namespace {

constexpr double kGoal = 1.2;
constexpr std::size_t kSessions = 100;

struct FileSize {
    const char* name;
    std::size_t bytes;
    int calls;
};
constexpr FileSize kSizes[] = {{"20 KB", 20 * 1024, 20}, {"1 MB", 1024 * 1024, 3}};

// A depot in a server of the measurement's own, with a file of each size.
class DirectoryDepot {
public:
    DirectoryDepot() {
        DefineUserFolder();
        key_.Text("Bench", "DisplayName.eng", "Bench");
        key_.Text("Bench", "Path1", test::kSuffix);
        key_.Dword("Bench", "Type1", kDirectoryLocation);
        key_.Text("Bench", "Host1", "127.0.0.1");
        key_.Dword("Bench", "Port1", server.Port());
        key_.Text("Bench", "Username1", test::kEditor);
        key_.Text("Bench", "Password1", test::kEditorPassword);
        const RawDirectory raw(server.Port());
        for (const FileSize& size : kSizes) {
            raw.Add(DN(size), std::string(size.name) + ".kra", std::string(size.bytes, 'x'));
        }
    }

    static std::string DN(const FileSize& size) {
        return std::string("CN=") + size.name + ".kra," + test::kSuffix;
    }
    static std::string DisplayPath(const FileSize& size) {
        return std::string("<Bench>\\") + size.name + ".kra";
    }

    test::DirectoryServer server;

private:
    test::ScratchKey key_{HKEY_CURRENT_USER, kDepotsKey};
};

std::string MakeRawTempFile() {
    char folder[MAX_PATH + 1] = {}, name[MAX_PATH] = {};
    GetTempPathA(sizeof(folder), folder);
    GetTempFileNameA(folder, "raw", 0, name);
    return name;
}

void WriteRawFile(const std::string& path, const std::vector<char>& bytes) {
    const HFILE file = _lcreat(path.c_str(), 0);
    _lwrite(file, bytes.data(), static_cast<UINT>(bytes.size()));
    _lclose(file);
}

std::string ReadRawFile(const std::string& path) {
    const HFILE file = _lopen(path.c_str(), OF_READ);
    std::string bytes(static_cast<std::size_t>(_llseek(file, 0, FILE_END)), '\0');
    _llseek(file, 0, FILE_BEGIN);
    _lread(file, bytes.data(), static_cast<UINT>(bytes.size()));
    _lclose(file);
    return bytes;
}

std::string RawLoad(unsigned port, const std::string& dn) {
    const std::string path = MakeRawTempFile();
    const RawDirectory directory(port);
    WriteRawFile(path, directory.Read(dn));
    return path;
}

void RawRelease(unsigned port, const std::string& dn, const std::string& path, bool changed) {
    if (changed) {
        const std::string bytes = ReadRawFile(path);
        RawDirectory(port).Replace(dn, bytes);
    }
    DeleteFileA(path.c_str());
}

// The depot's location is chosen once, before anything is measured.
void MeasureFile(const DirectoryDepot& depot, CDepots& depots, const FileSize& size, bool changed) {
    const unsigned port = depot.server.Port();
    const std::string dn = DirectoryDepot::DN(size), path = DirectoryDepot::DisplayPath(size);
    Compare(
        std::string("load and release ") + size.name + (changed ? ", changed, " : ", ") +
            std::to_string(size.calls) + " times",
        kGoal,
        [&] {
            for (int call = 0; call < size.calls; ++call) {
                DepotFileContext file(path, depots);
                file.changed = changed;
                Require(file.Release() == 1, "release");
            }
        },
        [&] {
            for (int call = 0; call < size.calls; ++call) {
                RawRelease(port, dn, RawLoad(port, dn), changed);
            }
        });
}

// Sessions of a client that holds each open with a file of its own.
class OpenSessions {
public:
    OpenSessions(IDepotIntrApi* api, const std::string& path)
        : api_(api), path_(std::wstring(path.begin(), path.end()).c_str()) {}

    void Open() {
        for (LONG_PTR& session : sessions_) {
            session = 0;
            Require(api_->DPLoadFile(&session, path_.Address()) == S_OK, "load");
        }
    }
    void Close() {
        for (const LONG_PTR session : sessions_) api_->DPUnInitialize(session);
    }

private:
    IDepotIntrApi* api_;
    Text path_;
    std::vector<LONG_PTR> sessions_ = std::vector<LONG_PTR>(kSessions);
};

// Each session reads the definitions and looks whether its depot can be reached before it loads the
// file.
void RawSessions(unsigned port, const std::string& dn) {
    std::vector<std::string> copies;
    for (std::size_t session = 0; session < kSessions; ++session) {
        RawSession(RawDepots::kDirectories);
        RawDirectory(port).Find(test::kSuffix);
        copies.push_back(RawLoad(port, dn));
    }
    for (const std::string& path : copies) DeleteFileA(path.c_str());
}

void MeasureOpenSessions(IDepotIntrApi* api, const DirectoryDepot& depot) {
    const FileSize& size = kSizes[0];
    OpenSessions sessions(api, DirectoryDepot::DisplayPath(size));
    Compare(
        "100 sessions open at once, 20 KB each", kGoal,
        [&] {
            sessions.Open();
            sessions.Close();
        },
        [&] { RawSessions(depot.server.Port(), DirectoryDepot::DN(size)); }, kFewRepetitions);
    const std::size_t before = HeapBytes();
    sessions.Open();
    const std::size_t open = HeapBytes();
    sessions.Close();
    std::printf("%-44s %zu bytes of heap each\n", "memory of these sessions",
                (open - before) / kSessions);
}

}  // namespace

void MeasureWorkingCopies(IDepotIntrApi* api) {
    const DirectoryDepot depot;
    CDepots depots(kDepotsKey);
    depots.At(0)->paths->GetActivePath();
    PrintHeader("Working copies: against the client library and one temporary file");
    for (const FileSize& size : kSizes) {
        for (const bool changed : {false, true}) MeasureFile(depot, depots, size, changed);
    }
    MeasureOpenSessions(api, depot);
}

}  // namespace depot::bench
