#include "model/local_mirror.h"

#include <utility>
#include <vector>

#include "platform/local_file.h"
#include "platform/paths.h"
#include "platform/temp_file.h"
#include "platform/win32.h"

namespace depot {
namespace {

// Fetches one entry into a local file; what cannot be fetched or written is skipped.
void FetchFile(CLDAPItems& directory, const std::string& dn, const std::string& localPath) {
    FileBuffer contents;
    directory.ReadFileContents(dn, contents);
    WriteLocalFile(localPath, contents.bytes.get(), contents.length);
}

int StoreLocalFile(CLDAPItems& directory, const std::string& dn, const std::string& localPath) {
    const ConnectionScope connection(directory, nullptr);
    if (!connection) return 0;
    const std::vector<std::uint8_t> bytes =
        ReadLocalFile(localPath).value_or(std::vector<std::uint8_t>());
    const auto length = static_cast<std::uint32_t>(bytes.size());
    return directory.ReplaceFileContents(dn, bytes.data(), length) == LDAP_SUCCESS ? 1 : 0;
}

struct LocalChild {
    std::string dn;
    std::string name;
    bool isFolder = false;
};

// Leaves out entries that are neither kind, and counts those whose name must not become a local
// one.
std::vector<LocalChild> LocalChildren(CLDAPItems& directory, const LdapItemList& children,
                                      std::uint32_t& unsafeNames) {
    std::vector<LocalChild> found;
    for (const CLDAPItem* child : children) {
        LocalChild local = {child->path, {}, false};
        if (directory.SplitEntryName(child->path, local.name, local.isFolder) == 0) continue;
        if (IsSafeLocalName(local.name)) {
            found.push_back(std::move(local));
        } else {
            ++unsafeNames;
        }
    }
    return found;
}

// Returns whether the entry itself could be listed.
int FetchTree(CLDAPItems& directory, const std::string& dn, const std::string& localFolder,
              std::uint32_t& unsafeNames) {
    LdapItemList children;
    const int listed = directory.ListChildren(dn, children);
    EnsureLocalFolder(localFolder);
    const std::vector<LocalChild> found = LocalChildren(directory, children, unsafeNames);
    for (const LocalChild& child : found) {
        if (!child.isFolder) FetchFile(directory, child.dn, JoinPath(localFolder, child.name));
    }
    for (const LocalChild& child : found) {
        if (!child.isFolder) continue;
        EnsureLocalFolder(JoinPath(localFolder, child.name));
        FetchTree(directory, child.dn, localFolder, unsafeNames);
    }
    return listed;
}

int FailWithParameterError(CLDAPItems& directory, std::string* errorText) {
    directory.SetLastError(LDAP_PARAM_ERROR);
    if (DirectoryInfo* const info = directory.SharedInfo().Access()) {
        info->lastError = LDAP_PARAM_ERROR;
    }
    const std::string text = directory.ErrorText();
    if (errorText != nullptr && !text.empty()) *errorText = text;
    return 0;
}

}  // namespace

bool OpenDirectory(CLDAPItems& directory, std::string* errorText) {
    const bool simple = directory.Location().authentication == kSimpleAuthentication;
    const bool unknown = directory.GetUserName().empty() || directory.GetPassword().empty();
    return (simple && unknown ? directory.PromptAndConnect(errorText)
                              : directory.ConnectLocation(errorText)) != 0;
}

ConnectionScope::ConnectionScope(CLDAPItems& directory, std::string* errorText)
    : directory_(directory) {
    open_ = directory_.IsConnected();
    if (open_) return;
    open_ = opened_ = OpenDirectory(directory_, errorText);
}

ConnectionScope::~ConnectionScope() {
    if (opened_) directory_.Close();
}

std::string FetchToLocal(CLDAPItems& directory, const std::string& dn) {
    const std::string localPath = MakeTempFileName();
    const ConnectionScope connection(directory, nullptr);
    if (!connection) {
        DeleteFileA(localPath.c_str());
        return {};
    }
    FetchFile(directory, dn, localPath);
    return localPath;
}

int ReleaseLocal(CLDAPItems& directory, const std::string& dn, const std::string& localPath,
                 bool writeBack, std::string* errorText) {
    if (localPath.empty()) {
        if (writeBack) directory.ReportError(LDAP_PARAM_ERROR, errorText);
        return 0;
    }
    const int result = writeBack ? StoreLocalFile(directory, dn, localPath) : 1;
    DeleteFileA(localPath.c_str());
    return result;
}

int UploadNewFile(CLDAPItems& directory, const std::string& localPath, const std::string& parentDN,
                  bool connect, std::string* errorText) {
    if (localPath.empty() || parentDN.empty()) return FailWithParameterError(directory, errorText);
    if (connect && !directory.IsConnected() && !OpenDirectory(directory, errorText)) return 0;
    const std::string name = NamePart(localPath);
    const std::vector<std::uint8_t> bytes =
        ReadLocalFile(localPath).value_or(std::vector<std::uint8_t>());
    const std::uint32_t code =
        directory.AddFileEntry(EntryDN(directory.NamingNames().file, name, parentDN), name,
                               bytes.data(), static_cast<std::uint32_t>(bytes.size()));
    if (connect) directory.Close();
    return code == LDAP_SUCCESS ? 1 : 0;
}

int DownloadTree(CLDAPItems& directory, const std::string& dn, const std::string& localFolder,
                 bool connect, std::string* errorText) {
    if (connect && !directory.IsConnected() && !OpenDirectory(directory, errorText)) return 0;
    std::uint32_t unsafeNames = 0;
    const int listed = FetchTree(directory, dn, localFolder, unsafeNames);
    if (unsafeNames > 0 && errorText != nullptr) *errorText = UnsafeNamesText(unsafeNames);
    if (connect) directory.Close();
    return listed;
}

}  // namespace depot
