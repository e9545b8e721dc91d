#include <string>
#include <vector>

#include "bench/benches.h"
#include "bench/comparison.h"
#include "bench/raw_directory.h"
#include "directory/ldap_items.h"
#include "support/directory_server.h"

namespace depot::bench {
namespace {

constexpr double kGoal = 1.1;
constexpr int kConnections = 10;
// Single writes of a third of a millisecond scatter; so many of them do not.
constexpr int kWrites = 100;
constexpr int kFileBytes = 10 * 1024;

// A server of the measurement's own, and the component's connection and the raw one to it.
class Directory {
public:
    Directory() : raw(server.Port()), location(server.Location().Clone()), items(location.get()) {
        Require(items.ConnectLocation(nullptr) == 1, "connect");
    }

    // Makes a folder of so many files without much in them; returns its DN.
    std::string MakeFolder(const std::string& name, int files = 0) {
        server.AddFolder(name, test::kSuffix);
        const std::string folder = "cn=" + name + "," + test::kSuffix;
        std::string ldif;
        for (int number = 0; number < files; ++number) {
            const std::string file = "file" + std::to_string(number) + ".krc";
            ldif += "dn: cn=" + file + "," + folder +
                    "\nobjectClass: quillonFileBinary\ncn: " + file +
                    "\nquillonFileContentsBinary: some\n\n";
        }
        if (files > 0) server.Apply(ldif);
        return folder;
    }

    // The usual limit on results is lower than what is listed here.
    test::DirectoryServer server{"global sizelimit unlimited"};
    RawDirectory raw;
    std::unique_ptr<CDepotPath> location;
    CLDAPItems items;
};

// A folder for each side, whose files have running numbers.
class Side {
public:
    Side(Directory& directory, const std::string& name) : folder(directory.MakeFolder(name)) {}

    static std::string Name(int number) { return "file" + std::to_string(number) + ".krc"; }
    std::string DN(int number) const { return "CN=" + Name(number) + "," + folder; }

    std::string folder;
    int added = 0, deleted = 0;
};

void MeasureConnecting(Directory& directory) {
    Compare(
        "connect, bind, unbind, 10 times", kGoal,
        [&] {
            for (int call = 0; call < kConnections; ++call) {
                CLDAPItems items(directory.location.get());
                Require(items.ConnectLocation(nullptr) == 1, "connect");
            }
        },
        [&] {
            for (int call = 0; call < kConnections; ++call) RawDirectory(directory.server.Port());
        });
}

void MeasureListing(Directory& directory, int files, int repetitions) {
    const auto count = static_cast<std::size_t>(files);
    const std::string folder = directory.MakeFolder("list" + std::to_string(files), files);
    Compare(
        "list " + std::to_string(files) + " entries", kGoal,
        [&] {
            LdapItemList children;
            Require(directory.items.ListChildren(folder, children) == 1, "list");
            Require(children.Count() == count, "list");
        },
        [&] { Require(directory.raw.List(folder).size() == count, "list"); }, repetitions);
}

void MeasureReading(Directory& directory, const std::string& folder, const std::string& size,
                    std::size_t bytes, int calls) {
    const std::string dn = "CN=" + size + ".krc," + folder;
    directory.raw.Add(dn, size + ".krc", std::string(bytes, 'x'));
    Compare(
        "read " + size + ", " + std::to_string(calls) + " times", kGoal,
        [&] {
            for (int call = 0; call < calls; ++call) {
                FileBuffer buffer;
                directory.items.ReadFileContents(dn, buffer);
                Require(buffer.length == bytes, "read");
            }
        },
        [&] {
            for (int call = 0; call < calls; ++call) {
                Require(directory.raw.Read(dn).size() == bytes, "read");
            }
        });
}

// Runs one step as often as a repetition takes.
template <class Step>
void Repeat(Step step) {
    for (int call = 0; call < kWrites; ++call) step(call);
}

void MeasureAdding(Directory& directory, Side& own, Side& raw, const std::string& contents) {
    Compare(
        "add a file of 10 KB, 100 times", kGoal,
        [&] {
            Repeat([&](int) {
                const int number = own.added++;
                Require(directory.items.AddFileEntry(own.DN(number), Side::Name(number),
                                                     contents.data(), kFileBytes) == LDAP_SUCCESS,
                        "add");
            });
        },
        [&] {
            Repeat([&](int) {
                const int number = raw.added++;
                directory.raw.Add(raw.DN(number), Side::Name(number), contents);
            });
        });
}

void MeasureReplacing(Directory& directory, const Side& own, const Side& raw,
                      const std::string& contents) {
    Compare(
        "replace 10 KB, 100 times", kGoal,
        [&] {
            Repeat([&](int call) {
                Require(directory.items.ReplaceFileContents(own.DN(call), contents.data(),
                                                            kFileBytes) == LDAP_SUCCESS,
                        "replace");
            });
        },
        [&] { Repeat([&](int call) { directory.raw.Replace(raw.DN(call), contents); }); });
}

// Each file goes to a name beyond the last and comes back.
void MeasureRenaming(Directory& directory, const Side& own, const Side& raw) {
    const auto other = [](const Side& side, int call) { return side.added + call; };
    Compare(
        "rename and rename back, 100 times", kGoal,
        [&] {
            Repeat([&](int call) {
                const std::string here = own.DN(call), there = own.DN(other(own, call));
                Require(directory.items.RenameEntry(here, there, nullptr) == 1, "rename");
                Require(directory.items.RenameEntry(there, here, nullptr) == 1, "rename");
            });
        },
        [&] {
            Repeat([&](int call) {
                const int there = other(raw, call);
                directory.raw.Rename(raw.DN(call), Side::Name(there), raw.folder);
                directory.raw.Rename(raw.DN(there), Side::Name(call), raw.folder);
            });
        });
}

// Takes away what the first measurement added.
void MeasureDeleting(Directory& directory, Side& own, Side& raw) {
    Compare(
        "delete a file, 100 times", kGoal,
        [&] {
            Repeat([&](int) {
                Require(directory.items.DeleteTree(own.DN(own.deleted++), nullptr) == 1, "delete");
            });
        },
        [&] { Repeat([&](int) { directory.raw.Delete(raw.DN(raw.deleted++)); }); });
}

void MeasureWriting(Directory& directory) {
    Side own(directory, "own"), raw(directory, "raw");
    const std::string contents(kFileBytes, 'x');
    MeasureAdding(directory, own, raw, contents);
    MeasureReplacing(directory, own, raw, contents);
    MeasureRenaming(directory, own, raw);
    MeasureDeleting(directory, own, raw);
}

}  // namespace

void MeasureDirectory() {
    Directory directory;
    PrintHeader("Directory: a server on this machine, against the client library called directly");
    MeasureConnecting(directory);
    MeasureListing(directory, 100, kUsualRepetitions);
    MeasureListing(directory, 1000, kUsualRepetitions);
    MeasureListing(directory, 10000, kFewRepetitions);
    const std::string folder = directory.MakeFolder("read");
    MeasureReading(directory, folder, "1 KB", 1024, 50);
    MeasureReading(directory, folder, "20 KB", 20 * 1024, 50);
    MeasureReading(directory, folder, "1 MB", 1024 * 1024, 5);
    MeasureWriting(directory);
}

}  // namespace depot::bench
