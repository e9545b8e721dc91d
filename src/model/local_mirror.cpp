#include "model/local_mirror.h"

#include <optional>
#include <utility>
#include <vector>

#include "model/depot_paths.h"
#include "model/recovered_files.h"
#include "platform/error_text.h"
#include "platform/local_file.h"
#include "platform/paths.h"
#include "platform/temp_file.h"
#include "platform/user_notice.h"
#include "platform/win32.h"

namespace depot {
namespace {

constexpr char kMessageTitle[] = "Quillon";

// Fetches one entry into a local file; one that cannot be fetched leaves an empty file. Returns
// 0 or the reason why the file does not hold the entry's bytes.
std::uint32_t FetchFile(CLDAPItems& directory, const std::string& dn,
                        const std::string& localPath) {
    FileBuffer contents;
    const bool found = directory.ReadFileContents(dn, contents) != 0;
    const std::uint32_t code = found ? std::uint32_t{LDAP_SUCCESS} : directory.LastError();
    const bool written = WriteLocalFile(localPath, contents.bytes.get(), contents.length);
    return found && !written ? std::uint32_t{LDAP_LOCAL_ERROR} : code;
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

// The way of a changed working copy back into its entry.
class WriteBack {
public:
    WriteBack(CLDAPItems& directory, const std::string& dn, const std::string& localPath)
        : directory_(directory), dn_(dn), localPath_(localPath) {}

    // Returns the directory's code. `fetchCode` is what the fetch of the working copy left.
    std::uint32_t Run(std::uint32_t fetchCode) {
        bytes_ = ReadLocalFile(localPath_);
        if (!bytes_) readError_ = GetLastError();
        // A missing entry has no bytes that could be lost.
        const bool complete = fetchCode == LDAP_SUCCESS || fetchCode == LDAP_NO_SUCH_OBJECT;
        reason_ = fetchCode;
        const std::uint32_t code = Store(bytes_ && complete);
        if (code == LDAP_SUCCESS) return code;
        reason_ = code;
        KeepWorkingCopy();
        return code;
    }

    // Whether the only copy of the user's bytes is the working copy itself.
    bool MustStay() const { return mustStay_; }

    // Tells what was kept; nothing when nothing had to be.
    void Report(std::string* errorText) {
        if (kept_.empty()) return;
        std::string text = Reason();
        if (!text.empty()) text += "\n";
        text += kept_;
        if (errorText != nullptr) *errorText = text;
        ShowNotice(text, kMessageTitle, nullptr);
    }

private:
    std::uint32_t Store(bool isWhole) {
        // The connection tells its own failure, too.
        const ConnectionScope connection(directory_, nullptr);
        if (!connection) return directory_.LastError();
        if (!isWhole) {
            const std::uint32_t code = KeepEntry();
            if (code != LDAP_SUCCESS) return code;
        }
        static constexpr std::uint8_t kNothing = 0;
        const void* const data = bytes_ ? bytes_->data() : &kNothing;
        const auto length = static_cast<std::uint32_t>(bytes_ ? bytes_->size() : 0);
        return directory_.ReplaceFileContents(dn_, data, length);
    }

    // Keeps what the entry holds now.
    std::uint32_t KeepEntry() {
        FileBuffer contents;
        if (directory_.ReadFileContents(dn_, contents) == 0) return directory_.LastError();
        if (contents.length == 0) return LDAP_SUCCESS;
        kept_ = KeepRecovered(Name(), contents.bytes.get(), contents.length);
        return kept_.empty() ? LDAP_LOCAL_ERROR : LDAP_SUCCESS;
    }

    void KeepWorkingCopy() {
        std::string kept;
        if (bytes_) kept = KeepRecovered(Name(), bytes_->data(), bytes_->size());
        mustStay_ = kept.empty() && PathExists(localPath_);
        if (mustStay_) kept = localPath_;
        if (!kept.empty()) kept_ = std::move(kept);
    }

    std::string Name() {
        std::string name;
        bool isFolder = false;
        directory_.SplitEntryName(dn_, name, isFolder);
        return name;
    }

    std::string Reason() {
        std::string text;
        if (reason_ == LDAP_SUCCESS) {
            FormatErrorText(readError_, localPath_.c_str(), kMessageTitle, &text, nullptr);
            return text;
        }
        directory_.SetLastError(reason_);
        return directory_.ErrorText();
    }

    CLDAPItems& directory_;
    const std::string& dn_;
    const std::string& localPath_;
    std::optional<std::vector<std::uint8_t>> bytes_;
    DWORD readError_ = ERROR_SUCCESS;
    std::uint32_t reason_ = LDAP_SUCCESS;
    std::string kept_;
    bool mustStay_ = false;
};

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

std::string FetchToLocal(CLDAPItems& directory, const std::string& dn, std::uint32_t* code) {
    const std::string localPath = MakeTempFileName();
    const ConnectionScope connection(directory, nullptr);
    if (!connection) {
        DeleteFileA(localPath.c_str());
        if (code != nullptr) *code = directory.LastError();
        return {};
    }
    const std::uint32_t fetched = FetchFile(directory, dn, localPath);
    if (code != nullptr) *code = fetched;
    return localPath;
}

int ReleaseLocal(CLDAPItems& directory, const std::string& dn, const std::string& localPath,
                 bool writeBack, std::string* errorText, std::uint32_t fetchCode) {
    if (localPath.empty()) {
        if (writeBack) directory.ReportError(LDAP_PARAM_ERROR, errorText);
        return 0;
    }
    if (!writeBack) {
        DeleteFileA(localPath.c_str());
        return 1;
    }
    WriteBack work(directory, dn, localPath);
    const bool stored = work.Run(fetchCode) == LDAP_SUCCESS;
    if (!work.MustStay()) DeleteFileA(localPath.c_str());
    // After the working copy is gone: nothing waits for the user.
    work.Report(errorText);
    return stored ? 1 : 0;
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
