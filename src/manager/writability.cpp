#include "manager/writability.h"

#include <algorithm>
#include <atomic>
#include <memory>
#include <new>
#include <optional>

#include "manager/display_path.h"
#include "model/local_mirror.h"
#include "platform/error_text.h"
#include "platform/handles.h"
#include "platform/paths.h"
#include "platform/win32.h"

namespace depot {
namespace {

constexpr char kCaption[] = "Quillon";

// A file that others test with comes and goes.
constexpr int kMaxAttempts = 3;

void Describe(DWORD error, const std::string& shownName, std::string* errorText) {
    if (errorText == nullptr) return;
    FormatErrorText(error, shownName.c_str(), kCaption, errorText, nullptr);
}

// Returns bytes that no other test adds, and nobody else.
FileBuffer MakeProbe() {
    static std::atomic<unsigned> count = 0;
    FILETIME now = {};
    GetSystemTimeAsFileTime(&now);
    const std::string text =
        "DepotIntr tests whether this place can be written: " + std::to_string(now.dwHighDateTime) +
        "." + std::to_string(now.dwLowDateTime) + " " + std::to_string(GetCurrentProcessId()) +
        " " + std::to_string(++count);
    FileBuffer probe = {static_cast<std::uint32_t>(text.size()),
                        std::make_unique<std::uint8_t[]>(text.size() + kFileBufferReserve)};
    std::copy(text.begin(), text.end(), probe.bytes.get());
    return probe;
}

// Without memory for the condition a probe of this moment is deleted without it.
void RemoveProbe(CLDAPItems& directory, const std::string& dn, const FileBuffer& probe) try {
    directory.RemoveUnchangedEntry(dn, probe);
} catch (const std::bad_alloc&) {
    directory.RemoveEmptyEntry(dn);
}

// In a folder that exists, nothing but an entry shows whether the user may add one. What someone
// stores under its name before it is deleted is not this test's any more.
int TestNewEntry(CLDAPItems& directory, const std::string& dn, std::string* errorText) {
    std::string name;
    bool isFolder = false;
    directory.SplitEntryName(dn, name, isFolder);
    const FileBuffer probe = MakeProbe();
    const std::uint32_t code = directory.AddFileEntry(dn, name, probe.bytes.get(), probe.length);
    if (code == LDAP_SUCCESS) RemoveProbe(directory, dn, probe);
    if (code == LDAP_SUCCESS || code == LDAP_ALREADY_EXISTS) return 1;
    if (errorText != nullptr) *errorText = directory.ErrorText();
    return 0;
}

// The folders that a test adds. They go with the object, from the bottom up; whatever someone else
// put there meanwhile keeps its folder above it.
class AddedFolders {
public:
    explicit AddedFolders(CLDAPItems& directory) : directory_(directory) {}
    ~AddedFolders() {
        for (std::size_t index = list.Count(); index > 0; --index) {
            directory_.RemoveEmptyEntry(list.At(index - 1).path);
        }
    }
    AddedFolders(const AddedFolders&) = delete;
    AddedFolders& operator=(const AddedFolders&) = delete;

    LdapItemList list;

private:
    CLDAPItems& directory_;
};

// Adds the folders that a place lacks, as saving there would, and removes them again. Nothing when
// it lacks none.
std::optional<int> TestMissingFolders(CLDAPItems& directory, const std::string& dn,
                                      std::string* errorText) {
    std::uint32_t failure = LDAP_SUCCESS;
    {
        AddedFolders added(directory);
        const int created = directory.EnsureFolderPath(dn, false, errorText, &added.list);
        if (created != 0) return added.list.Count() > 0 ? std::optional(created) : std::nullopt;
        failure = directory.LastError();
    }
    directory.SetLastError(failure);
    return 0;
}

int TestEntry(CLDAPItems& directory, const std::string& dn, std::string* errorText) {
    const ConnectionScope connection(directory, errorText);
    if (!connection) return 0;
    const std::uint32_t found = directory.FindEntry(dn);
    if (found == LDAP_SUCCESS) return 1;
    if (found == LDAP_INVALID_DN_SYNTAX) {
        directory.SetLastError(found);
        if (errorText != nullptr) *errorText = directory.ErrorText();
    }
    const std::optional<int> created = TestMissingFolders(directory, dn, errorText);
    return created ? *created : TestNewEntry(directory, dn, errorText);
}

UniqueHandle OpenToWrite(const std::string& path, DWORD creation, DWORD flags) {
    return OwnFile(CreateFileA(path.c_str(), GENERIC_WRITE, 0, nullptr, creation, flags, nullptr));
}

// Opens the file, or makes one that vanishes by itself: it is never deleted by its name, which may
// be that of somebody else's file by then.
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

int TestFile(const std::string& path, const std::string& shownName, std::string* errorText) {
    const DWORD attributes = GetFileAttributesA(path.c_str());
    const bool isFolder =
        attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
    const std::string probe = isFolder ? JoinPath(path, kProbeFileName) : path;
    DWORD error = ERROR_SUCCESS;
    if (OpenProbe(probe, error)) return 1;
    Describe(error, shownName, errorText);
    return 0;
}

}  // namespace

int TestWritable(std::uint32_t storeType, const std::string& storagePath, CLDAPItems* connection,
                 std::string* errorText, const std::string& shownName) {
    if (storeType == kDirectoryLocation) {
        return connection ? TestEntry(*connection, storagePath, errorText) : 0;
    }
    const std::string& shown = shownName.empty() ? storagePath : shownName;
    if (!IsAbsolutePath(storagePath)) {
        Describe(ERROR_INVALID_PARAMETER, shown, errorText);
        return 0;
    }
    return TestFile(storagePath, shown, errorText);
}

int TestPathWritable(CDepot& depot, const std::string& path, std::string* errorText) {
    const std::string storage = DisplayToStorage(depot, path);
    const CDepotPath* const location = depot.paths->ActiveLocation();
    if (location == nullptr) return 0;
    return TestWritable(location->type, storage, depot.DirectoryConnection(), errorText);
}

int TestDepotWritable(CDepot& depot, const std::string& shownName, std::string* errorText) {
    CDepotPath* const location = depot.paths->ActiveLocation();
    if (location == nullptr) return 0;
    const std::string path = ExpandedPath(*location);
    const std::string& shown = shownName.empty() ? path : shownName;
    if (location->indexSlot == CDepotPath::kWritabilityUnknown) {
        CLDAPItems* const directory = depot.DirectoryConnection();
        const std::string place = directory ? directory->PathToDN(path) : path;
        location->indexSlot = TestWritable(location->type, place, directory, errorText, shown);
    } else if (location->indexSlot == 0) {
        Describe(ERROR_ACCESS_DENIED, shown, errorText);
    }
    return location->indexSlot == 1 ? 1 : 0;
}

}  // namespace depot
