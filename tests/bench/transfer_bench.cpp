#include <string>
#include <vector>

#include "bench/benches.h"
#include "bench/comparison.h"
#include "bench/raw_directory.h"
#include "fileops/depot_file.h"
#include "manager/depot_world.h"
#include "support/directory_server.h"
#include "support/directory_transfer.h"

namespace depot::bench {
namespace {

constexpr double kGoal = 1.3;
constexpr int kFileBytes = 10 * 1024;
constexpr int kCopies = 50;
constexpr int kEntryCopies = 20;
constexpr int kRenames = 20;

std::string Name(int number) {
    return "f" + std::to_string(number) + ".kra";
}

std::string Times(const char* what, int count) {
    return what + std::to_string(count) + " times";
}

std::string ReadRaw(const std::string& path) {
    const HFILE file = _lopen(path.c_str(), OF_READ);
    std::string bytes(static_cast<std::size_t>(_llseek(file, 0, FILE_END)), '\0');
    _llseek(file, 0, FILE_BEGIN);
    _lread(file, bytes.data(), static_cast<UINT>(bytes.size()));
    _lclose(file);
    return bytes;
}

void WriteRaw(const std::string& path, const std::vector<char>& bytes) {
    const HFILE file = _lcreat(path.c_str(), 0);
    _lwrite(file, bytes.data(), static_cast<UINT>(bytes.size()));
    _lclose(file);
}

// Writes a file beside the old one and lets it take its place, as whoever must not lose the old one
// does it.
void ReplaceRaw(const std::string& path, const std::vector<char>& bytes) {
    const std::string beside = path + ".tmp";
    const HANDLE file = CreateFileA(beside.c_str(), GENERIC_WRITE, 0, nullptr, CREATE_NEW,
                                    FILE_ATTRIBUTE_NORMAL, nullptr);
    DWORD written = 0;
    WriteFile(file, bytes.data(), static_cast<DWORD>(bytes.size()), &written, nullptr);
    FlushFileBuffers(file);
    CloseHandle(file);
    Require(MoveFileExA(beside.c_str(), path.c_str(), MOVEFILE_REPLACE_EXISTING), "replace");
}

// The names of a folder's files, by a bare find loop.
std::vector<std::string> FindNames(const std::string& folder) {
    std::vector<std::string> names;
    WIN32_FIND_DATAA found = {};
    const HANDLE search = FindFirstFileA((folder + "\\*.*").c_str(), &found);
    do {
        if (found.cFileName[0] != '.') names.emplace_back(found.cFileName);
    } while (FindNextFileA(search, &found));
    FindClose(search);
    return names;
}

// What each transfer asks of the server, over a connection of its own.
class RawTransfer {
public:
    explicit RawTransfer(unsigned port) : directory_(port) {}

    void Upload(const std::string& localFolder, const std::string& name) const {
        AddFolder(name);
        const std::string folder = "CN=" + name + "," + test::kSuffix;
        for (const std::string& file : FindNames(localFolder)) {
            directory_.Add("CN=" + file + "," + folder, file, ReadRaw(localFolder + "\\" + file));
        }
    }

    template <class Write>
    void Download(const std::string& folder, const std::string& localFolder,
                  const Write& write) const {
        CreateDirectoryA(localFolder.c_str(), nullptr);
        for (const auto& [dn, isFolder] : directory_.List(folder)) {
            write(localFolder + "\\" + dn.substr(3, dn.find(',') - 3), directory_.Read(dn));
        }
    }

    void Copy(const std::string& from, const std::string& to, const std::string& name) const {
        const std::vector<char> bytes = directory_.Read(from);
        directory_.Add(to, name, std::string(bytes.begin(), bytes.end()));
    }

    // The server renames the folder with all that it holds.
    void Rename(const std::string& from, const std::string& to) const {
        directory_.Rename("CN=" + from + "," + test::kSuffix, to, test::kSuffix);
    }

private:
    void AddFolder(const std::string& name) const {
        directory_.AddFolder("CN=" + name + "," + test::kSuffix, name);
    }

    RawDirectory directory_;
};

// A local folder of files and a directory depot, on a server of the measurement's own.
class Stores {
public:
    Stores() {
        auto location = server_.Location().Clone();
        location->owner = corp.paths.get();
        corp.name = "Corp";
        corp.paths->Append(std::move(location));
        corp.paths->GetActivePath();
    }

    unsigned Port() const { return server_.Port(); }
    CLDAPItems& Directory() { return *corp.DirectoryConnection(); }

    // Makes a local folder of so many files and returns its path.
    std::string MakeLocalFolder(int files) {
        const std::string name = "l" + std::to_string(files);
        world.folder.MakeFolder(name);
        for (int number = 0; number < files; ++number) {
            world.folder.MakeFile(name + "\\" + Name(number), std::string(kFileBytes, 'x'));
        }
        return world.folder.At(name);
    }

    // A name that no entry below the base has yet.
    std::string NewName() { return "t" + std::to_string(++names_); }

    static std::string DN(const std::string& name) { return "CN=" + name + "," + test::kSuffix; }

    test::DepotWorld world;
    CDepot corp{nullptr};

private:
    // Folders of a few hundred files come above the usual limit on results.
    test::DirectoryServer server_{"global sizelimit unlimited"};
    int names_ = 0;
};

// What a copy onto an existing file takes that keeps what belongs to it: the new bytes are written
// beside it, flushed, and take its place.
void CopyOnto(const std::string& source, const std::string& target) {
    const std::string beside = target + ".new", old = target + ".old";
    Require(CopyFileA(source.c_str(), beside.c_str(), FALSE), "copy");
    {
        const UniqueHandle file = OwnFile(CreateFileA(
            beside.c_str(), GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE,
            nullptr, OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr));
        Require(FlushFileBuffers(file.get()), "flush");
    }
    Require(ReplaceFileA(target.c_str(), beside.c_str(), old.c_str(), 0, nullptr, nullptr),
            "replace");
    DeleteFileA(old.c_str());
}

void MeasureFolderCopies() {
    PrintHeader("Folder to folder: against CopyFileA, and onto existing files with an exchange");
    test::DepotWorld world;
    CDepot& work = world.Add("Work", "Work", "w");
    CDepot& home = world.Add("Home", "Home", "h");
    world.folder.MakeFile("w\\a.kra", std::string(kFileBytes, 'x'));
    world.folder.MakeFolder("raw");
    const std::string source = world.folder.At("w\\a.kra"), target = world.folder.At("raw\\a.kra");
    const auto copy = [&] {
        Require(CopyFile(work, "<Work>\\a.kra", "<Home>\\a.kra", &home, false, nullptr) == 1,
                "copy");
    };
    const std::string copied = world.folder.At("h\\a.kra");
    Compare(
        Times("copy 10 KB between depots, ", kCopies), kGoal,
        [&] {
            for (int call = 0; call < kCopies; ++call) {
                DeleteFileA(copied.c_str());
                copy();
            }
        },
        [&] {
            for (int call = 0; call < kCopies; ++call) {
                DeleteFileA(target.c_str());
                Require(CopyFileA(source.c_str(), target.c_str(), FALSE), "copy");
            }
        });
    Compare(
        Times("copy 10 KB onto an existing file, ", kCopies), kGoal,
        [&] {
            for (int call = 0; call < kCopies; ++call) copy();
        },
        [&] {
            for (int call = 0; call < kCopies; ++call) CopyOnto(source, target);
        });
}

Minima MeasureUploads(Stores& stores, int files, const std::string& localFolder) {
    return Compare(
        "upload " + std::to_string(files) + " files of 10 KB", kGoal,
        [&] {
            Require(Upload(stores.Directory(), localFolder, Stores::DN(stores.NewName()),
                           ExistingEntries::kReplace, nullptr) == 1,
                    "upload");
        },
        [&] { RawTransfer(stores.Port()).Upload(localFolder, stores.NewName()); }, kFewRepetitions);
}

// Each repetition fetches into a new folder.
Minima MeasureDownloads(Stores& stores, int files, const std::string& folder) {
    const auto place = [&] { return stores.world.folder.At(stores.NewName()); };
    return Compare(
        "download " + std::to_string(files) + " files of 10 KB", kGoal,
        [&] { Require(Download(stores.Directory(), folder, place(), nullptr) == 1, "download"); },
        [&] { RawTransfer(stores.Port()).Download(folder, place(), &WriteRaw); }, kFewRepetitions);
}

void MeasureReplacingDownloads(Stores& stores, int files, const std::string& folder) {
    const std::string own = stores.world.folder.At("own"), raw = stores.world.folder.At("raw");
    for (const std::string& place : {own, raw}) {
        RawTransfer(stores.Port()).Download(folder, place, &WriteRaw);
    }
    Compare(
        "download onto " + std::to_string(files) + " existing files", kGoal,
        [&] { Require(Download(stores.Directory(), folder, own, nullptr) == 1, "download"); },
        [&] { RawTransfer(stores.Port()).Download(folder, raw, &ReplaceRaw); }, kFewRepetitions);
}

void MeasureTrees(Stores& stores) {
    Minima uploads = {}, downloads = {};
    for (const int files : {100, 200}) {
        const std::string local = stores.MakeLocalFolder(files), folder = stores.NewName();
        const Minima upload = MeasureUploads(stores, files, local);
        RawTransfer(stores.Port()).Upload(local, folder);
        const Minima download = MeasureDownloads(stores, files, Stores::DN(folder));
        if (files == 200) {
            PrintGrowth("growth of uploads from 100 to 200 (at most 2.3)", uploads, upload);
            PrintGrowth("growth of downloads from 100 to 200", downloads, download);
            MeasureReplacingDownloads(stores, files, Stores::DN(folder));
        }
        uploads = upload;
        downloads = download;
    }
}

// Each copy is an operation of its own, with a connection of its own.
void MeasureEntryCopies(Stores& stores, const std::string& folder) {
    const std::string path = "<Corp>\\" + folder + "\\" + Name(0);
    const std::string dn = "CN=" + Name(0) + "," + Stores::DN(folder);
    Compare(
        Times("copy entry to entry, ", kEntryCopies), kGoal,
        [&] {
            for (int call = 0; call < kEntryCopies; ++call) {
                const std::string target = "<Corp>\\" + stores.NewName() + ".kra";
                Require(CopyFile(stores.corp, path, target, &stores.corp, false, nullptr) == 1,
                        "copy");
            }
        },
        [&] {
            for (int call = 0; call < kEntryCopies; ++call) {
                const std::string name = stores.NewName() + ".kra";
                RawTransfer(stores.Port()).Copy(dn, Stores::DN(name), name);
            }
        });
}

// Each repetition renames what the one before it left.
void MeasureFolderRenames(Stores& stores, const std::string& local) {
    std::string own = stores.NewName(), raw = stores.NewName();
    for (const std::string& folder : {own, raw}) RawTransfer(stores.Port()).Upload(local, folder);
    Compare(
        Times("rename a folder of 200 files in place, ", kRenames), kGoal,
        [&] {
            for (int call = 0; call < kRenames; ++call) {
                const std::string next = stores.NewName();
                Require(MoveFile(stores.corp, "<Corp>\\" + own, "<Corp>\\" + next, nullptr, nullptr,
                                 nullptr) == 1,
                        "rename");
                own = next;
            }
        },
        [&] {
            for (int call = 0; call < kRenames; ++call) {
                const std::string next = stores.NewName();
                RawTransfer(stores.Port()).Rename(raw, next);
                raw = next;
            }
        },
        kFewRepetitions);
}

}  // namespace

void MeasureTransfers() {
    MeasureFolderCopies();
    PrintHeader("Transfers: against the same calls of the client library over one connection");
    Stores stores;
    MeasureTrees(stores);
    const std::string local = stores.world.folder.At("l200"), folder = stores.NewName();
    RawTransfer(stores.Port()).Upload(local, folder);
    MeasureEntryCopies(stores, folder);
    MeasureFolderRenames(stores, local);
}

}  // namespace depot::bench
