#include "model/local_mirror.h"

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

// Splits a child's DN; false for an entry that is neither kind or whose name must not become a
// local one.
bool LocalNameOf(CLDAPItems& directory, const CLDAPItem& child, std::string& name, bool& isFolder) {
    return directory.SplitEntryName(child.path, name, isFolder) != 0 && IsSafeLocalName(name);
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
                 bool connect) {
    if (connect && !directory.IsConnected() && !OpenDirectory(directory, nullptr)) return 0;
    LdapItemList children;
    const int listed = directory.ListChildren(dn, children);
    EnsureLocalFolder(localFolder);
    std::string name;
    bool isFolder = false;
    for (const CLDAPItem* child : children) {
        if (!LocalNameOf(directory, *child, name, isFolder) || isFolder) continue;
        FetchFile(directory, child->path, JoinPath(localFolder, name));
    }
    for (const CLDAPItem* child : children) {
        if (!LocalNameOf(directory, *child, name, isFolder) || !isFolder) continue;
        EnsureLocalFolder(JoinPath(localFolder, name));
        DownloadTree(directory, child->path, localFolder, false);
    }
    if (connect) directory.Close();
    return listed;
}

}  // namespace depot
