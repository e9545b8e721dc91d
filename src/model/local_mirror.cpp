#include "model/local_mirror.h"

#include <new>
#include <optional>
#include <utility>
#include <vector>

#include "model/depot_paths.h"
#include "model/fetched_file.h"
#include "model/recovered_files.h"
#include "model/working_copy_journal.h"
#include "platform/error_text.h"
#include "platform/file_in_use.h"
#include "platform/file_names.h"
#include "platform/local_file.h"
#include "platform/paths.h"
#include "platform/temp_file.h"
#include "platform/text.h"
#include "platform/user_notice.h"
#include "platform/win32.h"

namespace depot {
namespace {

constexpr char kMessageTitle[] = "Quillon";
constexpr std::uint32_t kDetect = 1;

bool DetectsConflicts(const CLDAPItems& directory) {
    return directory.Location().detectConflicts == kDetect;
}

Digest DigestOfContents(const FileBuffer& contents) {
    return DigestOf(contents.bytes.get(), contents.length);
}

WorkingCopySource SourceOf(CLDAPItems& directory, const std::string& dn) {
    WorkingCopySource source = {{}, directory.SharedInfo().Key(), dn};
    bool isFolder = false;
    directory.SplitEntryName(dn, source.name, isFolder);
    return source;
}

// Fetches one entry into a local file; one that cannot be fetched leaves an empty file.
WorkingCopyOrigin FetchFile(CLDAPItems& directory, const WorkingCopySource& source,
                            const std::string& localPath) {
    FileBuffer contents;
    const bool found = directory.ReadFileContents(source.dn, contents) != 0;
    const std::uint32_t code = found ? std::uint32_t{LDAP_SUCCESS} : directory.LastError();
    // A scanner may be looking at the new file already.
    const bool written = RetryWhileInUse(FileUse::kOwn, [&] {
        return WriteLocalFile(localPath, contents.bytes.get(), contents.length);
    });
    WorkingCopyOrigin origin;
    origin.code = found && !written ? std::uint32_t{LDAP_LOCAL_ERROR} : code;
    if (!found || written) {
        NoteWorkingCopy(localPath, source, contents.bytes.get(), contents.length);
    }
    if (origin.code == LDAP_SUCCESS && DetectsConflicts(directory)) {
        origin.digest = DigestOfContents(contents);
    }
    return origin;
}

// A temporary file that is deleted unless it is handed out.
class NewWorkingCopy {
public:
    explicit NewWorkingCopy(std::string path) : path_(std::move(path)) {}
    ~NewWorkingCopy() {
        if (!path_.empty()) DeleteWorkingCopy(path_);
    }
    NewWorkingCopy(const NewWorkingCopy&) = delete;
    NewWorkingCopy& operator=(const NewWorkingCopy&) = delete;

    const std::string& Path() const { return path_; }
    std::string Release() { return std::exchange(path_, {}); }

private:
    std::string path_;
};

// Leaves the object unconnected on every way out, where that is wanted.
class ClosingScope {
public:
    ClosingScope(CLDAPItems& directory, bool closes) : directory_(directory), closes_(closes) {}
    ~ClosingScope() {
        if (closes_) directory_.Close();
    }
    ClosingScope(const ClosingScope&) = delete;
    ClosingScope& operator=(const ClosingScope&) = delete;

private:
    CLDAPItems& directory_;
    bool closes_;
};

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

// Fetches the files of a subtree into one local folder. Going on after a failure, it remembers the
// first one.
class TreeFetch {
public:
    TreeFetch(CLDAPItems& directory, const std::string& localFolder)
        : directory_(directory), localFolder_(localFolder) {}

    // Returns the directory's code of the first failure. A server's tree may be deeper than the
    // stack, so that what is left to do is kept in a list.
    std::uint32_t Run(const std::string& dn) {
        Visit(dn);
        while (!folders_.empty()) {
            const LocalChild folder = std::move(folders_.back());
            folders_.pop_back();
            EnsureFolder(JoinPath(localFolder_, folder.name));
            Visit(folder.dn);
        }
        return code_;
    }

    std::uint32_t UnsafeNames() const { return unsafeNames_; }
    // Whether a file took the place of another one of the subtree.
    bool SharesNames() const { return sharesNames_; }

private:
    void Note(std::uint32_t code) {
        if (code_ == LDAP_SUCCESS) code_ = code;
    }
    void EnsureFolder(const std::string& path) {
        if (!EnsureLocalFolder(path)) Note(LDAP_LOCAL_ERROR);
    }

    void Visit(const std::string& dn) {
        LdapItemList children;
        if (directory_.ListChildren(dn, children) == 0) Note(directory_.LastError());
        unsafeNames_ += directory_.UnsafeNames();
        if (children.Count() > 0) EnsureFolder(localFolder_);
        std::vector<LocalChild> found = LocalChildren(directory_, children, unsafeNames_);
        for (const LocalChild& child : found) {
            if (!child.isFolder) FetchFile(child);
        }
        // The last one is taken first.
        for (auto child = found.rbegin(); child != found.rend(); ++child) {
            if (child->isFolder) folders_.push_back(std::move(*child));
        }
    }

    void FetchFile(const LocalChild& file) {
        FileBuffer contents;
        if (directory_.ReadFileContents(file.dn, contents) == 0) {
            Note(directory_.LastError());
            return;
        }
        Note(WriteFetchedFile(contents, JoinPath(localFolder_, file.name),
                              ExistingFile::kIsReplaced));
        // The last file of a name stays, but the others are not passed over in silence.
        if (names_.Insert(file.name)) return;
        sharesNames_ = true;
        Note(LDAP_NAMING_VIOLATION);
    }

    CLDAPItems& directory_;
    const std::string& localFolder_;
    std::vector<LocalChild> folders_;
    FileNameSet names_;
    bool sharesNames_ = false;
    std::uint32_t unsafeNames_ = 0;
    std::uint32_t code_ = LDAP_SUCCESS;
};

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

    // Returns the directory's code. `origin` is what the working copy was made from.
    std::uint32_t Run(const WorkingCopyOrigin& origin) {
        RetryWhileInUse(FileUse::kOwn, [&] {
            bytes_ = ReadLocalFile(localPath_);
            return bytes_.has_value();
        });
        localError_ = bytes_ ? origin.refused.error : GetLastError();
        reason_ = origin.code;
        // What cannot be read, or is not all that was written, replaces nothing.
        const bool whole = bytes_ && localError_ == ERROR_SUCCESS;
        const std::uint32_t code = whole ? Store(origin) : std::uint32_t{LDAP_LOCAL_ERROR};
        if (code == LDAP_SUCCESS) return code;
        reason_ = code;
        KeepWorkingCopy(origin.refused);
        return code;
    }

    // Whether the only copy of the user's bytes is the working copy itself.
    bool MustStay() const { return mustStay_; }

    // Tells what was kept; nothing when nothing had to be. What was done stays done also when
    // memory runs out here.
    void Report(std::string* errorText) try {
        if (kept_.empty() && reason_ != kContentsChanged) return;
        std::string text = Reason();
        if (!text.empty() && !kept_.empty()) text += "\n";
        text += kept_;
        if (errorText != nullptr) *errorText = text;
        ShowNotice(text, kMessageTitle, nullptr);
    } catch (const std::bad_alloc&) {
        return;
    }

private:
    std::uint32_t Store(const WorkingCopyOrigin& origin) {
        // The connection tells its own failure, too.
        const ConnectionScope connection(directory_, nullptr);
        if (!connection) return directory_.LastError();
        if (DetectsConflicts(directory_)) return StoreUnlessChanged(origin.digest);
        // A missing entry has no bytes that could be lost.
        const bool complete = origin.code == LDAP_SUCCESS || origin.code == LDAP_NO_SUCH_OBJECT;
        if (!complete) {
            FileBuffer present;
            std::uint32_t code = Read(present);
            if (code == LDAP_SUCCESS) code = KeepEntry(present);
            if (code != LDAP_SUCCESS) return code;
        }
        return directory_.ReplaceFileContents(dn_, Data(), Length());
    }

    // Stores only over the very bytes that were fetched.
    std::uint32_t StoreUnlessChanged(const std::optional<Digest>& fetched) {
        FileBuffer present;
        std::uint32_t code = ReadUnchanged(fetched, present);
        if (code != LDAP_SUCCESS) return code;
        code = directory_.ReplaceUnchangedContents(dn_, Data(), Length(), present);
        if (code != kContentsChanged && code != LDAP_UNAVAILABLE_CRIT_EXTENSION) return code;
        // A server that cannot compare this attribute's values refuses as well: then the entry
        // still holds what was fetched, and looking just before the change must do.
        code = ReadUnchanged(fetched, present);
        return code == LDAP_SUCCESS ? directory_.ReplaceFileContents(dn_, Data(), Length()) : code;
    }

    std::uint32_t ReadUnchanged(const std::optional<Digest>& fetched, FileBuffer& present) {
        const std::uint32_t code = Read(present);
        if (code != LDAP_SUCCESS) return code;
        return fetched == DigestOfContents(present) ? std::uint32_t{LDAP_SUCCESS}
                                                    : kContentsChanged;
    }

    const void* Data() const { return bytes_->data(); }
    std::uint32_t Length() const { return static_cast<std::uint32_t>(bytes_->size()); }

    std::uint32_t Read(FileBuffer& present) {
        const bool found = directory_.ReadFileContents(dn_, present) != 0;
        return found ? std::uint32_t{LDAP_SUCCESS} : directory_.LastError();
    }

    // Keeps what the entry holds now.
    std::uint32_t KeepEntry(const FileBuffer& contents) {
        if (contents.length == 0) return LDAP_SUCCESS;
        kept_ = KeepRecovered(Name(), contents.bytes.get(), contents.length);
        return kept_.empty() ? LDAP_LOCAL_ERROR : LDAP_SUCCESS;
    }

    void KeepWorkingCopy(const RefusedEdits& refused) {
        std::string kept;
        if (bytes_) {
            kept = KeepRecoveredProfile(RecoveredFolder(), Name(),
                                        refused.whole ? *refused.whole : *bytes_, refused.edits);
        }
        mustStay_ = kept.empty() && PathMayExist(localPath_);
        // What is gone is named as well: its user has to know which edit it was.
        if (mustStay_ || !bytes_) kept = localPath_;
        // In a conflict the entry stays, and what was kept of it tells nobody anything.
        if (!kept.empty() || reason_ == kContentsChanged) kept_ = std::move(kept);
    }

    std::string Name() {
        std::string name;
        bool isFolder = false;
        directory_.SplitEntryName(dn_, name, isFolder);
        return name;
    }

    std::string Reason() {
        if (reason_ != LDAP_SUCCESS) directory_.SetLastError(reason_);
        if (reason_ == kContentsChanged) return ConflictText();
        return localError_ != ERROR_SUCCESS ? LocalErrorText() : directory_.ErrorText();
    }

    std::string LocalErrorText() {
        const std::string lead = "The changes of \"" + Name() + "\" were not stored.";
        std::string text;
        FormatErrorText(localError_, lead.c_str(), kMessageTitle, &text, nullptr);
        return std::string(TrimTrailingBlanks(text));
    }

    std::string ConflictText() {
        return "\"" + Name() + "\" was changed by someone else meanwhile. That version stays" +
               (kept_.empty() ? "." : "; yours is kept here:");
    }

    CLDAPItems& directory_;
    const std::string& dn_;
    const std::string& localPath_;
    std::optional<std::vector<std::uint8_t>> bytes_;
    DWORD localError_ = ERROR_SUCCESS;  // of the working copy itself
    std::uint32_t reason_ = LDAP_SUCCESS;
    std::string kept_;
    bool mustStay_ = false;
};

}  // namespace

bool OpenDirectory(CLDAPItems& directory, std::string* errorText) {
    return directory.AsFlag(directory.Connection().Open(), errorText) != 0;
}

std::string FetchToLocal(CLDAPItems& directory, const std::string& dn, WorkingCopyOrigin* origin) {
    NewWorkingCopy copy(MakeTempFileName());
    // Before anything waits for the server: users end programs that hang there.
    const WorkingCopySource source = SourceOf(directory, dn);
    NoteWorkingCopy(copy.Path(), source, nullptr, 0);
    const ConnectionScope connection(directory, nullptr);
    WorkingCopyOrigin fetched;
    fetched.code = directory.LastError();
    if (connection) fetched = FetchFile(directory, source, copy.Path());
    if (origin != nullptr) *origin = fetched;
    return connection ? copy.Release() : std::string();
}

int ReleaseLocal(CLDAPItems& directory, const std::string& dn, const std::string& localPath,
                 bool writeBack, std::string* errorText, const WorkingCopyOrigin& origin) {
    if (localPath.empty()) {
        if (writeBack) directory.ReportError(LDAP_PARAM_ERROR, errorText);
        return 0;
    }
    if (!writeBack) {
        DeleteWorkingCopy(localPath);
        return 1;
    }
    WriteBack work(directory, dn, localPath);
    const bool stored = work.Run(origin) == LDAP_SUCCESS;
    // One that stays is left where the user is told that it is.
    if (work.MustStay()) {
        ForgetWorkingCopy(localPath);
    } else {
        DeleteWorkingCopy(localPath);
    }
    // After the working copy is gone: nothing waits for the user.
    work.Report(errorText);
    return stored ? 1 : 0;
}

int UploadNewFile(CLDAPItems& directory, const std::string& localPath, const std::string& parentDN,
                  bool connect, std::string* errorText) {
    if (localPath.empty() || parentDN.empty()) return FailWithParameterError(directory, errorText);
    const ClosingScope closing(directory, connect);
    if (connect && !directory.IsConnected() && !OpenDirectory(directory, errorText)) return 0;
    const std::string name = NamePart(localPath);
    const std::vector<std::uint8_t> bytes =
        ReadLocalFile(localPath).value_or(std::vector<std::uint8_t>());
    const std::uint32_t code =
        directory.AddFileEntry(EntryDN(directory.NamingNames().file, name, parentDN), name,
                               bytes.data(), static_cast<std::uint32_t>(bytes.size()));
    return code == LDAP_SUCCESS ? 1 : 0;
}

int DownloadTree(CLDAPItems& directory, const std::string& dn, const std::string& localFolder,
                 bool connect, std::string* errorText) {
    const ClosingScope closing(directory, connect);
    if (connect && !directory.IsConnected() && !OpenDirectory(directory, errorText)) return 0;
    TreeFetch fetch(directory, localFolder);
    const std::uint32_t code = fetch.Run(dn);
    if (fetch.SharesNames() && errorText != nullptr) *errorText = kSharedNamesText;
    if (fetch.UnsafeNames() > 0 && errorText != nullptr) {
        *errorText = UnsafeNamesText(fetch.UnsafeNames());
    }
    if (code != LDAP_SUCCESS) directory.SetLastError(code);
    return code == LDAP_SUCCESS ? 1 : 0;
}

}  // namespace depot
