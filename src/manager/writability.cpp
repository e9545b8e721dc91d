#include "manager/writability.h"

#include <algorithm>
#include <atomic>
#include <memory>
#include <new>
#include <optional>

#include "directory/connection_scope.h"
#include "manager/display_path.h"
#include "platform/error_text.h"
#include "platform/handles.h"
#include "platform/paths.h"
#include "platform/text.h"
#include "platform/win32.h"

namespace depot {
namespace {

constexpr char kCaption[] = "Quillon";

// A file that others test with appears and is deleted again.
constexpr int kMaxAttempts = 3;

Result Failure(DWORD code, const std::string& shownName) {
    Error error = {Reason::kRefused, CodeKind::kSystem, code};
    FormatErrorText(code, shownName.c_str(), kCaption, &error.text, nullptr);
    return error;
}

// Returns bytes that nothing else adds.
FileBuffer MakeProbe() {
    static std::atomic<unsigned> count = 0;
    FILETIME now = {};
    GetSystemTimeAsFileTime(&now);
    const std::string text = Concatenate(
        {"DepotIntr tests whether this place can be written: ", NumberText(now.dwHighDateTime), ".",
         NumberText(now.dwLowDateTime), " ", NumberText(GetCurrentProcessId()), " ",
         NumberText(++count)});
    FileBuffer probe = {static_cast<std::uint32_t>(text.size()),
                        std::make_unique<std::uint8_t[]>(text.size() + kFileBufferReserve)};
    std::copy(text.begin(), text.end(), probe.bytes.get());
    return probe;
}

// Without memory for the condition a probe of this moment is deleted without it.
void RemoveProbe(EntryStore& entries, const std::string& dn, const FileBuffer& probe) try {
    static_cast<void>(entries.RemoveUnchanged(dn, probe));
} catch (const std::bad_alloc&) {
    static_cast<void>(entries.Remove(dn));
}

// In a folder that exists, nothing but an entry shows whether the user may add one. What someone
// stores under its name before it is deleted is not this test's any more.
Result TestNewEntry(EntryStore& entries, const std::string& dn) {
    const std::optional<EntryName> name = entries.Schema().SplitEntryName(dn);
    const FileBuffer probe = MakeProbe();
    Result added =
        entries.AddFile(dn, name ? name->name : std::string(), probe.bytes.get(), probe.length);
    if (added) RemoveProbe(entries, dn, probe);
    return added.Is(Reason::kExists) ? Result() : added;
}

// The folders that a test adds. They are deleted with the object, from the bottom up; whatever
// someone else put there meanwhile keeps its folder above it.
class AddedFolders {
public:
    explicit AddedFolders(EntryStore& entries) : entries_(entries) {}
    ~AddedFolders() {
        for (std::size_t index = list.Count(); index > 0; --index) {
            static_cast<void>(entries_.Remove(list.At(index - 1).path));
        }
    }
    AddedFolders(const AddedFolders&) = delete;
    AddedFolders& operator=(const AddedFolders&) = delete;

    LdapItemList list;

private:
    EntryStore& entries_;
};

Result TestEntry(CLDAPItems& directory, const std::string& dn) {
    const ConnectionScope connection(directory.Connection());
    if (!connection) return connection.Outcome();
    EntryStore& entries = directory.Entries();
    if (entries.Find(dn)) return {};
    {
        // The folders that a place lacks are added, as saving there would, and removed again.
        AddedFolders added(entries);
        Result ensured = entries.EnsureFolders(dn, added.list);
        if (!ensured || added.list.Count() > 0) return ensured;
    }
    return TestNewEntry(entries, dn);
}

UniqueHandle OpenToWrite(const std::string& path, DWORD creation, DWORD flags) {
    return OwnFile(CreateFileA(path.c_str(), GENERIC_WRITE, 0, nullptr, creation, flags, nullptr));
}

// Opens the file, or makes one that vanishes by itself: it is never deleted by its name, which may
// be that of another file by then.
UniqueHandle OpenProbe(const std::string& path, DWORD& error) {
    for (int attempt = 1;; ++attempt) {
        UniqueHandle made =
            OpenToWrite(path, CREATE_NEW, FILE_ATTRIBUTE_NORMAL | FILE_FLAG_DELETE_ON_CLOSE);
        const DWORD refusal = GetLastError();
        if (made) return made;
        UniqueHandle existing = OpenToWrite(path, OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL);
        error = GetLastError();
        if (existing || error != ERROR_FILE_NOT_FOUND) return existing;
        // Of a file that is not there, the reason why none can be made is what counts.
        error = refusal;
        const bool hasGone = refusal == ERROR_FILE_EXISTS;
        if (!hasGone || attempt == kMaxAttempts) return nullptr;
    }
}

Result TestFile(const std::string& path, const std::string& shownName) {
    if (!IsAbsolutePath(path)) return Failure(ERROR_INVALID_PARAMETER, shownName);
    const DWORD attributes = GetFileAttributesA(path.c_str());
    const bool isFolder =
        attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
    const std::string probe = isFolder ? JoinPath(path, kProbeFileName) : path;
    DWORD error = ERROR_SUCCESS;
    return OpenProbe(probe, error) ? Result() : Failure(error, shownName);
}

// Tests a place of the depot's store.
Result TestPlace(CDepot& depot, const std::string& storagePath, const std::string& shownName) {
    CLDAPItems* const directory = depot.DirectoryConnection();
    if (directory == nullptr) return TestFile(storagePath, shownName);
    Result tested = TestEntry(*directory, storagePath);
    return tested ? std::move(tested) : depot.ActiveStore().Keep(tested.Why());
}

}  // namespace

int TestWritable(std::uint32_t storeType, const std::string& storagePath, CLDAPItems* connection,
                 std::string* errorText, const std::string& shownName) {
    if (storeType != kDirectoryLocation) {
        return TestFile(storagePath, shownName.empty() ? storagePath : shownName).AsFlag(errorText);
    }
    return connection ? connection->AsFlag(TestEntry(*connection, storagePath), errorText) : 0;
}

int TestPathWritable(CDepot& depot, const std::string& path, std::string* errorText) {
    const std::string storage = DisplayToStorage(depot, path);
    return depot.paths->Count() > 0 ? TestPlace(depot, storage, storage).AsFlag(errorText) : 0;
}

int TestDepotWritable(CDepot& depot, const std::string& shownName, std::string* errorText) {
    CDepotPath* const location = depot.paths->ActiveLocation();
    if (location == nullptr) return 0;
    const std::string path = ExpandedPath(*location);
    const std::string& shown = shownName.empty() ? path : shownName;
    if (location->indexSlot == CDepotPath::kWritabilityUnknown) {
        const std::string place = depot.ActiveStore().PathOf(path);
        location->indexSlot = TestPlace(depot, place, shown).AsFlag(errorText);
    } else if (location->indexSlot == 0) {
        Failure(ERROR_ACCESS_DENIED, shown).AsFlag(errorText);
    }
    return location->indexSlot == 1 ? 1 : 0;
}

}  // namespace depot
