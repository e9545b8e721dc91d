#include <cstdio>
#include <memory>
#include <string>
#include <vector>

#include "bench/benches.h"
#include "bench/comparison.h"
#include "bench/raw_directory.h"
#include "directory/connection_scope.h"
#include "fileops/enumerate.h"
#include "manager/depot_world.h"
#include "model/working_copy.h"
#include "support/directory_server.h"
#include "support/many_files.h"

namespace depot::bench {
namespace {

constexpr double kGoal = 1.3;
constexpr char kFilter[] = ".kra";

// Lists a depot's root into a list of its own.
void ListRoot(CDepot& depot, int expected, CDepotItems& list) {
    const CDepotItem folder("<" + depot.name + ">\\", &depot);
    Require(Enumerate(list, &folder, kFilter, {}, false) == expected, "list");
}

void ListRoot(CDepot& depot, int expected) {
    CDepotItems list;
    ListRoot(depot, expected, list);
}

// The bare loop: each record is copied, and nothing else is done with it.
void FindAll(const std::string& folder, std::size_t expected) {
    std::vector<std::unique_ptr<WIN32_FIND_DATAA>> records;
    WIN32_FIND_DATAA found = {};
    const HANDLE search = FindFirstFileA((folder + "\\*.*").c_str(), &found);
    do {
        records.push_back(std::make_unique<WIN32_FIND_DATAA>(found));
    } while (FindNextFileA(search, &found));
    FindClose(search);
    // With the two dot names.
    Require(records.size() == expected + 2, "find");
}

void PrintMemory(CDepot& depot, int items) {
    const std::size_t before = HeapBytes();
    CDepotItems list;
    ListRoot(depot, items, list);
    std::printf("%-44s %zu bytes\n", "memory of an item", (HeapBytes() - before) / list.Count());
}

std::string Rows(int count, const char* what) {
    return "list " + std::to_string(count) + what;
}

std::string Growth(int count) {
    return "growth from " + std::to_string(count) + " to " + std::to_string(count * 10);
}

void MeasureFolders() {
    PrintHeader("Folders: against a bare find loop that copies each record");
    Minima previous = {};
    for (const int files : {100, 1'000, 10'000, 50'000}) {
        test::DepotWorld world;
        CDepot& depot = world.Add("Work", "Work", "w");
        const std::string folder = world.folder.At("w");
        Require(test::MakeManyFiles(folder, files), "make files");
        const Minima minima = Compare(
            Rows(files, " files"), kGoal, [&] { ListRoot(depot, files); },
            [&] { FindAll(folder, static_cast<std::size_t>(files)); },
            files > 1'000 ? kFewRepetitions : kUsualRepetitions);
        if (files > 100 && files < 50'000) PrintGrowth(Growth(files / 10), previous, minima);
        if (files == 50'000) PrintMemory(depot, files);
        previous = minima;
    }
}

// A folder of so many files on a server of the measurement's own, and a depot over it.
class DirectoryFolder {
public:
    explicit DirectoryFolder(int files) {
        server_.AddFolder("list", test::kSuffix);
        std::string ldif;
        for (int number = 0; number < files; ++number) {
            const std::string name = "f" + std::to_string(number) + ".kra";
            ldif += "dn: cn=" + name + "," + folder +
                    "\nobjectClass: quillonFileBinary\ncn: " + name +
                    "\nquillonFileContentsBinary: some\n\n";
        }
        server_.Apply(ldif);
        depot.name = "Corp";
        auto location = server_.Location(folder).Clone();
        location->owner = depot.paths.get();
        depot.paths->Append(std::move(location));
        depot.paths->GetActivePath();
    }

    // What one listing asks of the server, over a connection of its own.
    void List(std::size_t expected) const {
        Require(RawDirectory(server_.Port()).List(folder).size() == expected, "search");
    }

    // Fetches every file to look at it, over one connection.
    void ListAndFetch() {
        CLDAPItems& directory = *depot.DirectoryConnection();
        const ConnectionScope connection(directory, nullptr);
        LdapItemList children;
        Require(directory.ListChildren(folder, children) == 1, "list");
        for (const CLDAPItem* child : children) {
            ReleaseLocal(directory, child->path, FetchToLocal(directory, child->path), false);
        }
    }

    const std::string folder = std::string("cn=list,") + test::kSuffix;
    CDepot depot{nullptr};

private:
    // The usual limit on results is lower than what is listed here.
    test::DirectoryServer server_{"global sizelimit unlimited"};
};

void MeasureDirectories() {
    PrintHeader("Directory folders: against connecting, binding and one bare one-level search");
    Minima previous = {};
    for (const int entries : {100, 1'000, 10'000}) {
        DirectoryFolder directory(entries);
        const int repetitions = entries > 1'000 ? kFewRepetitions : kUsualRepetitions;
        const Minima minima = Compare(
            Rows(entries, " entries"), kGoal, [&] { ListRoot(directory.depot, entries); },
            [&] { directory.List(static_cast<std::size_t>(entries)); }, repetitions);
        if (entries > 100) PrintGrowth(Growth(entries / 10), previous, minima);
        if (entries == 1'000) {
            Compare(
                "list 1000 entries, against fetching each", 1.0,
                [&] { ListRoot(directory.depot, entries); }, [&] { directory.ListAndFetch(); },
                kFewRepetitions);
        }
        if (entries == 10'000) PrintMemory(directory.depot, entries);
        previous = minima;
    }
}

}  // namespace

void MeasureListings() {
    MeasureFolders();
    MeasureDirectories();
}

}  // namespace depot::bench
