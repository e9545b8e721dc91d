#include "fileops/anothers_place.h"

#include "directory/dn.h"
#include "platform/local_file.h"
#include "platform/paths.h"
#include "platform/short_name.h"
#include "store/folder_store.h"
#include "store/tree.h"

namespace depot {

Result RefuseAnothersPlace(const std::string& path) {
    if (!IsShortNameOfAnother(path)) return {};
    SetLastError(ERROR_INVALID_NAME);
    return Error{Reason::kBadName, CodeKind::kDirectory, LDAP_NAMING_VIOLATION, UnsafeNamesText(1)};
}

Result RefuseAnothersPlaces(const std::string& source, const std::string& folder) {
    Result fits = RefuseAnothersPlace(JoinPath(folder, NamePart(source)));
    if (!fits || !IsLocalFolder(source)) return fits;
    Tree tree;
    fits = ListTree(FolderStore::Instance(), source, tree);
    const std::size_t above = source.size() - NamePart(source).size();
    for (std::size_t at = 1; fits && at < tree.items.size(); ++at) {
        fits = RefuseAnothersPlace(JoinPath(folder, tree.items[at].path.substr(above)));
    }
    return fits;
}

}  // namespace depot
