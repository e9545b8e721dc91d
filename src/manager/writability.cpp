#include "manager/writability.h"

#include <memory>

#include "manager/display_path.h"
#include "model/local_mirror.h"
#include "platform/error_text.h"
#include "platform/handles.h"
#include "platform/paths.h"
#include "platform/win32.h"

namespace depot {
namespace {

constexpr char kCaption[] = "Quillon";

void Describe(DWORD error, const std::string& shownName, std::string* errorText) {
    if (errorText == nullptr) return;
    FormatErrorText(error, shownName.c_str(), kCaption, errorText, nullptr);
}

// In a folder that exists, nothing but an entry shows whether the user may add one.
int TestNewEntry(CLDAPItems& directory, const std::string& dn, std::string* errorText) {
    std::string name;
    bool isFolder = false;
    directory.SplitEntryName(dn, name, isFolder);
    const std::uint32_t code = directory.AddFileEntry(dn, name, nullptr, 0);
    if (code == LDAP_SUCCESS) directory.RemoveEmptyEntry(dn);
    if (code == LDAP_SUCCESS || code == LDAP_ALREADY_EXISTS) return 1;
    if (errorText != nullptr) *errorText = directory.ErrorText();
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
    LdapItemList added;
    const int created = directory.EnsureFolderPath(dn, false, errorText, &added);
    if (created != 0 && added.Count() == 0) return TestNewEntry(directory, dn, errorText);
    const std::uint32_t failure = directory.LastError();
    // From the bottom up. Whatever someone else put there meanwhile keeps its folder above it.
    for (std::size_t index = added.Count(); index > 0; --index) {
        directory.RemoveEmptyEntry(added.At(index - 1).path);
    }
    if (created == 0) directory.SetLastError(failure);
    return created;
}

bool IsAbsent(const std::string& path) {
    return GetFileAttributesA(path.c_str()) == INVALID_FILE_ATTRIBUTES;
}

int TestFile(const std::string& path, const std::string& shownName, std::string* errorText) {
    const DWORD attributes = GetFileAttributesA(path.c_str());
    const bool isFolder =
        attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
    const std::string probe = isFolder ? JoinPath(path, kProbeFileName) : path;
    const bool absent = IsAbsent(probe);
    UniqueHandle opened = OwnFile(CreateFileA(probe.c_str(), GENERIC_WRITE, 0, nullptr, OPEN_ALWAYS,
                                              FILE_ATTRIBUTE_NORMAL, nullptr));
    if (!opened) {
        Describe(GetLastError(), shownName, errorText);
        return 0;
    }
    opened.reset();
    if (absent) DeleteFileA(probe.c_str());
    return 1;
}

}  // namespace

int TestWritable(std::uint32_t storeType, const std::string& storagePath, CLDAPItems* connection,
                 std::string* errorText, const std::string& shownName) {
    if (storeType == kDirectoryLocation) {
        return connection ? TestEntry(*connection, storagePath, errorText) : 0;
    }
    return TestFile(storagePath, shownName.empty() ? storagePath : shownName, errorText);
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
