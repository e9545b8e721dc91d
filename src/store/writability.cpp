// Whether a place of a store can be written, found by trying.
#include <atomic>
#include <new>
#include <optional>

#include "platform/handles.h"
#include "platform/not_copied.h"
#include "platform/paths.h"
#include "platform/text.h"
#include "platform/win32.h"
#include "store/directory_store.h"
#include "store/folder_store.h"

namespace depot {
namespace {

// A file that others test with appears and is deleted again.
constexpr int kMaxAttempts = 3;

// Returns bytes that nothing else adds.
FileBuffer MakeProbe() {
    static std::atomic<unsigned> count = 0;
    FILETIME now = {};
    GetSystemTimeAsFileTime(&now);
    return BufferOf(Concatenate(
        {"DepotIntr tests whether this place can be written: ", NumberText(now.dwHighDateTime), ".",
         NumberText(now.dwLowDateTime), " ", NumberText(GetCurrentProcessId()), " ",
         NumberText(++count)}));
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
class AddedFolders : NotCopied {
public:
    explicit AddedFolders(EntryStore& entries) : entries_(entries) {}
    ~AddedFolders() {
        for (std::size_t index = list.Count(); index > 0; --index) {
            static_cast<void>(entries_.Remove(list.At(index - 1).path));
        }
    }

    LdapItemList list;

private:
    EntryStore& entries_;
};

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

}  // namespace

Result DirectoryStore::TestWritable(const std::string& path) {
    if (Entries().Find(path)) return {};
    {
        // The folders that a place lacks are added, as saving there would, and removed again.
        AddedFolders added(Entries());
        Result ensured = Entries().EnsureFolders(path, added.list);
        if (!ensured || added.list.Count() > 0) return Looked(std::move(ensured));
    }
    return Looked(TestNewEntry(Entries(), path));
}

Result FolderStore::TestWritable(const std::string& path) {
    if (!IsAbsolutePath(path)) return SystemError(ERROR_INVALID_PARAMETER, path);
    const DWORD attributes = GetFileAttributesA(path.c_str());
    const bool isFolder =
        attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
    const std::string probe = isFolder ? JoinPath(path, kProbeFileName) : path;
    DWORD error = ERROR_SUCCESS;
    return OpenProbe(probe, error) ? Result() : SystemError(error, path);
}

}  // namespace depot
