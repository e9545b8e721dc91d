#include "model/working_copy.h"

#include <utility>

#include "directory/connection_scope.h"
#include "model/recovered_files.h"
#include "model/working_copy_journal.h"
#include "platform/file_in_use.h"
#include "platform/local_file.h"
#include "platform/temp_file.h"
#include "platform/user_notice.h"
#include "platform/win32.h"

namespace depot {
namespace {

constexpr std::uint32_t kDetect = 1;
constexpr char kMessageTitle[] = "Quillon";

WorkingCopySource SourceOf(CLDAPItems& directory, const std::string& dn) {
    const std::optional<EntryName> entry = directory.Schema().SplitEntryName(dn);
    return {entry ? entry->name : std::string(), directory.Connection().Shared().Block().Key(), dn};
}

// Fetches one entry into a local file; one that cannot be fetched leaves an empty file.
WorkingCopyOrigin FetchFile(CLDAPItems& directory, const WorkingCopySource& source,
                            const std::string& localPath) {
    FileBuffer contents;
    const Result read = directory.Entries().ReadSeen(source.dn, contents);
    directory.AsFlag(read, nullptr);
    // A scanner may be looking at the new file already.
    const bool written = RetryWhileInUse(FileUse::kOwn, [&] {
        return WriteLocalFile(localPath, contents.bytes.get(), contents.length);
    });
    WorkingCopyOrigin origin;
    origin.code = read && !written ? std::uint32_t{LDAP_LOCAL_ERROR} : CodeOf(read);
    if (!read || written) {
        NoteWorkingCopy(localPath, source, contents.bytes.get(), contents.length);
    }
    if (origin.code == LDAP_SUCCESS && DetectsConflicts(directory.Location())) {
        origin.digest = DigestOf(contents);
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

}  // namespace

bool DetectsConflicts(const CDepotPath& location) {
    return location.detectConflicts == kDetect;
}

std::string FetchToLocal(CLDAPItems& directory, const std::string& dn, WorkingCopyOrigin* origin) {
    NewWorkingCopy copy(MakeTempFileName());
    // Before anything waits for the server: users end programs that hang there.
    const WorkingCopySource source = SourceOf(directory, dn);
    NoteWorkingCopy(copy.Path(), source, nullptr, 0);
    const ConnectionScope connection(directory, nullptr);
    WorkingCopyOrigin fetched;
    fetched.code = CodeOf(connection.Outcome());
    if (connection) fetched = FetchFile(directory, source, copy.Path());
    // Nothing else says so before the user fills in what looks empty.
    if (fetched.code == LDAP_NO_SUCH_ATTRIBUTE) {
        ShowNotice(UnseenContentsText(source.name), kMessageTitle, nullptr);
    }
    if (origin != nullptr) *origin = std::move(fetched);
    return connection ? copy.Release() : std::string();
}

void KeepWorkingCopy(const std::string& localPath, const std::string& name,
                     const std::string& folder, const RefusedEdits& refused) {
    const auto bytes = ReadLocalFile(localPath);
    if (!bytes) return;
    const auto& whole = refused.whole ? *refused.whole : *bytes;
    if (KeepRecoveredProfile(folder, name, whole, refused.edits).empty()) return;
    // What is kept already must not be kept once more by the next process.
    ForgetWorkingCopy(localPath);
    DeleteFileA(localPath.c_str());
}

void DropWorkingCopy(const std::string& localPath) noexcept {
    if (DeleteFileA(localPath.c_str())) ForgetWorkingCopy(localPath);
}

}  // namespace depot
