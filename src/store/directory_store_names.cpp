// What one name is to another one in a directory.
#include <memory>
#include <set>
#include <utility>

#include "store/directory_store.h"

namespace depot {
bool DirectoryStore::IsSame(const std::string& path, const std::string& other) const {
    return ComparableDN(Schema().NormalDN(path)) == ComparableDN(Schema().NormalDN(other));
}

bool DirectoryStore::IsInside(const std::string& path, const std::string& folder) const {
    return ComparableDN(Schema().NormalDN(path))
        .ends_with("," + ComparableDN(Schema().NormalDN(folder)));
}

TakePath DirectoryStore::UniquePaths() const {
    return [paths = std::make_shared<std::set<std::string>>()](const std::string& path) {
        return paths->insert(ComparableDN(path)).second;
    };
}

std::optional<PathsInDoubt> DirectoryStore::FindDoubt(const std::string& path,
                                                      const std::string& other) const {
    return depot::FindDoubt(path, other);
}

Error DirectoryStore::TakenName() {
    return {Reason::kExists, CodeKind::kDirectory, LDAP_ALREADY_EXISTS, kTakenNameText};
}

// A name of ASCII alone is taken for another one only where that is not.
bool DirectoryStore::MayBeTaken(const std::string& name) {
    seesVariants_ = seesVariants_ || HasVariants(name);
    return seesVariants_;
}

Result DirectoryStore::RefuseOther(const std::string& path, const std::string& name) {
    KindLookup lookup = {path, name};
    Entries().FindKind(lookup);
    // What cannot be seen is for the server to refuse.
    return lookup.isOther ? Result(TakenName()) : Result();
}

}  // namespace depot
