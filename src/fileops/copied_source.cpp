#include "fileops/copied_source.h"

#include "directory/local_listing.h"
#include "model/depot_paths.h"
#include "platform/local_file.h"

namespace depot {
namespace {

bool IsChange(std::uint32_t code) {
    return code == kContentsChanged || code == LDAP_NOT_ALLOWED_ON_NONLEAF;
}

// Whether each further request would fail, perhaps only after a long wait.
bool IsServerGone(std::uint32_t code) {
    return code == LDAP_SERVER_DOWN || code == LDAP_TIMEOUT || code == LDAP_CONNECT_ERROR;
}

// Removes each item by `remove`, which returns a directory's code, from the bottom up.
template <class Remove>
Leftovers RemoveCopied(const CopiedSource& copied, const Remove& remove) {
    Leftovers left;
    // A folder that holds what stayed stays for that reason alone, and needs no request.
    std::vector<bool> isHeld(copied.items.size());
    bool goesOn = true;
    for (std::size_t index = copied.items.size(); index-- > 0;) {
        const CopiedItem& item = copied.items[index];
        if (goesOn && !isHeld[index]) {
            const std::uint32_t code = remove(item);
            if (code == LDAP_SUCCESS || code == LDAP_NO_SUCH_OBJECT) continue;
            if (left.code == LDAP_SUCCESS) left.code = code;
            left.changed = left.changed || IsChange(code);
            goesOn = !IsServerGone(code);
        }
        ++(item.isFolder ? left.folders : left.files);
        isHeld[item.parent] = true;
    }
    return left;
}

std::uint32_t CompareLocalFile(const CopiedItem& file) {
    if (!PathMayExist(file.name)) return LDAP_NO_SUCH_OBJECT;
    const auto bytes = ReadLocalFile(file.name);
    if (!bytes) return LDAP_LOCAL_ERROR;
    const bool same = file.contents == DigestOf(bytes->data(), bytes->size());
    return same ? std::uint32_t{LDAP_SUCCESS} : kContentsChanged;
}

std::uint32_t RemoveLocalItem(const CopiedItem& item) {
    if (item.isFolder) {
        if (RemoveDirectoryA(item.name.c_str())) return LDAP_SUCCESS;
        const DWORD error = GetLastError();
        if (error == ERROR_DIR_NOT_EMPTY) return LDAP_NOT_ALLOWED_ON_NONLEAF;
        return PathMayExist(item.name) ? LDAP_LOCAL_ERROR : LDAP_NO_SUCH_OBJECT;
    }
    const std::uint32_t code = CompareLocalFile(item);
    if (code != LDAP_SUCCESS) return code;
    return DeleteFileA(item.name.c_str()) ? LDAP_SUCCESS : LDAP_LOCAL_ERROR;
}

// Returns "1 file", "2 files" or nothing.
std::string Counted(std::uint32_t count, const char* what) {
    if (count == 0) return {};
    return std::to_string(count) + " " + what + (count == 1 ? "" : "s");
}

}  // namespace

Leftovers RemoveCopiedEntries(CLDAPItems& directory, const CopiedSource& copied) {
    return RemoveCopied(copied, [&](const CopiedItem& item) {
        if (item.isFolder) return directory.RemoveEmptyEntry(item.name);
        return item.contents ? directory.RemoveUnchangedEntry(item.name, *item.contents)
                             : kContentsChanged;
    });
}

Leftovers RemoveCopiedFiles(const CopiedSource& copied) {
    return RemoveCopied(copied, &RemoveLocalItem);
}

bool IsAsCopied(const CopiedSource& copied) {
    std::vector<std::size_t> children(copied.items.size());
    for (std::size_t index = 1; index < copied.items.size(); ++index) {
        ++children[copied.items[index].parent];
    }
    for (std::size_t index = 0; index < copied.items.size(); ++index) {
        const CopiedItem& item = copied.items[index];
        if (!item.isFolder) {
            if (CompareLocalFile(item) != LDAP_SUCCESS) return false;
            continue;
        }
        LdapItemList present;
        const std::uint32_t left = AddLocalChildren(item.name, Subfolders::kTake, present);
        if (left != 0 || present.Count() != children[index]) return false;
    }
    return true;
}

std::string LeftoversText(const Leftovers& left) {
    const std::string files = Counted(left.files, "file"),
                      folders = Counted(left.folders, "folder");
    if (files.empty() && folders.empty()) return {};
    const char* const both = files.empty() || folders.empty() ? "" : " and ";
    const char* const stay = left.files + left.folders == 1 ? " stays" : " stay";
    const char* const reason = left.changed ? "changed meanwhile" : "not to be deleted";
    return "Copied, but " + files + both + folders + stay + " in the old place: " + reason + ".";
}

}  // namespace depot
