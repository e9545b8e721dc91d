#include "model/directory_trees.h"

#include <optional>
#include <utility>
#include <vector>

#include "platform/file_names.h"
#include "platform/local_file.h"
#include "platform/local_name.h"
#include "platform/not_copied.h"
#include "platform/paths.h"
#include "platform/short_name.h"
#include "store/folder_store.h"

namespace depot {
namespace {

// Where that is wanted, connects, and leaves the object unconnected on every way out.
class WantedConnection : NotCopied {
public:
    WantedConnection(LdapConnection& connection, bool isWanted)
        : connection_(connection), isWanted_(isWanted) {}
    ~WantedConnection() {
        if (isWanted_) connection_.Close();
    }

    Result Open() {
        return isWanted_ && !connection_.IsConnected() ? connection_.Open() : Result();
    }

private:
    LdapConnection& connection_;
    bool isWanted_;
};

struct LocalChild {
    std::string dn;
    std::string name;
    bool isFolder = false;
};

// Leaves out entries that are neither kind, and counts those whose name must not become a local
// one.
std::vector<LocalChild> LocalChildren(const LocationSchema& schema, const LdapItemList& children,
                                      std::uint32_t& unsafeNames) {
    std::vector<LocalChild> found;
    for (const CLDAPItem* child : children) {
        std::optional<EntryName> entry = schema.SplitEntryName(child->path);
        if (!entry) continue;
        if (IsSafeLocalName(entry->name)) {
            found.push_back({child->path, std::move(entry->name), entry->isFolder});
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
    TreeFetch(EntryStore& entries, const std::string& localFolder)
        : entries_(entries), localFolder_(localFolder) {}

    // Returns the first failure. A server's tree may be deeper than the
    // stack, so that what is left to do is kept in a list.
    Result Run(const std::string& dn) {
        Visit(dn);
        while (!folders_.empty()) {
            const LocalChild folder = std::move(folders_.back());
            folders_.pop_back();
            const std::string path = JoinPath(localFolder_, folder.name);
            if (LeavesOut(path)) continue;
            EnsureFolder(path);
            Visit(folder.dn);
        }
        return first_;
    }

    std::uint32_t UnsafeNames() const { return unsafeNames_; }
    // Whether a file took the place of another one of the subtree.
    bool SharesNames() const { return sharesNames_; }

private:
    void Note(Result result) {
        if (first_) first_ = std::move(result);
    }
    void Note(std::uint32_t code) { Note(entries_.Connection().Outcome(code)); }
    void EnsureFolder(const std::string& path) {
        if (!EnsureLocalFolder(path)) Note(LDAP_LOCAL_ERROR);
    }

    void Visit(const std::string& dn) {
        LdapItemList children;
        Note(entries_.List(dn, children));
        unsafeNames_ += entries_.UnsafeNames();
        if (children.Count() > 0) EnsureFolder(localFolder_);
        std::vector<LocalChild> found = LocalChildren(entries_.Schema(), children, unsafeNames_);
        for (const LocalChild& child : found) {
            if (!child.isFolder) FetchFile(child);
        }
        // The last one is taken first.
        for (auto child = found.rbegin(); child != found.rend(); ++child) {
            if (child->isFolder) folders_.push_back(std::move(*child));
        }
    }

    // Returns the directory's code.
    static std::uint32_t WriteLocally(const FileBuffer& contents, const std::string& path) {
        const Result written = FolderStore::Instance().WriteFile(path, contents, {});
        return written ? LDAP_SUCCESS : LDAP_LOCAL_ERROR;
    }

    // Counts what would go to the place of a file or folder of another name.
    bool LeavesOut(const std::string& path) {
        const bool isAnothers = IsShortNameOfAnother(path);
        if (isAnothers) ++unsafeNames_;
        return isAnothers;
    }

    void FetchFile(const LocalChild& file) {
        const std::string path = JoinPath(localFolder_, file.name);
        if (LeavesOut(path)) return;
        FileBuffer contents;
        if (Result read = entries_.ReadSeen(file.dn, contents); !read) {
            Note(std::move(read));
            return;
        }
        Note(WriteLocally(contents, path));
        // The last file of a name stays, but the others are not passed over silently.
        if (names_.Insert(file.name)) return;
        sharesNames_ = true;
        Note(LDAP_NAMING_VIOLATION);
    }

    EntryStore& entries_;
    const std::string& localFolder_;
    std::vector<LocalChild> folders_;
    FileNameSet names_;
    bool sharesNames_ = false;
    std::uint32_t unsafeNames_ = 0;
    Result first_;
};

}  // namespace

int UploadNewFile(CLDAPItems& directory, const std::string& localPath, const std::string& parentDN,
                  bool connect, std::string* errorText) {
    if (localPath.empty() || parentDN.empty()) {
        directory.Connection().Shared().SetLastError(LDAP_PARAM_ERROR);
        return directory.AsFlag(directory.Connection().Outcome(LDAP_PARAM_ERROR), errorText);
    }
    WantedConnection connection(directory.Connection(), connect);
    if (directory.AsFlag(connection.Open(), errorText) == 0) return 0;
    const std::string name = NamePart(localPath);
    const std::vector<std::uint8_t> bytes =
        ReadLocalFile(localPath).value_or(std::vector<std::uint8_t>());
    const std::string dn = EntryDN(directory.Schema().NamingNames().file, name, parentDN);
    const std::uint32_t code =
        directory.AddFileEntry(dn, name, bytes.data(), static_cast<std::uint32_t>(bytes.size()));
    return code == LDAP_SUCCESS ? 1 : 0;
}

int DownloadTree(CLDAPItems& directory, const std::string& dn, const std::string& localFolder,
                 bool connect, std::string* errorText) {
    WantedConnection connection(directory.Connection(), connect);
    if (directory.AsFlag(connection.Open(), errorText) == 0) return 0;
    TreeFetch fetch(directory.Entries(), localFolder);
    const Result fetched = fetch.Run(dn);
    if (fetch.SharesNames() && errorText != nullptr) *errorText = kSharedNamesText;
    if (fetch.UnsafeNames() > 0 && errorText != nullptr) {
        *errorText = UnsafeNamesText(fetch.UnsafeNames());
    }
    return directory.AsFlag(fetched, nullptr);
}

}  // namespace depot
