#include "manager/resolve_item.h"

#include "config/file_types.h"
#include "manager/depot_list.h"
#include "manager/display_path.h"
#include "platform/local_file.h"
#include "platform/paths.h"
#include "platform/text.h"

namespace depot {
namespace {

bool HasProfileExtension(const std::string& text) {
    const std::size_t dot = text.rfind('.');
    return dot != std::string::npos && IsProfileExtension(text.substr(dot + 1));
}

// Returns the text as the "Profile" folder knows it: the file itself, or its place below the
// subfolder named after its extension.
std::string FindInProfileFolder(const std::string& folder, const std::string& text) {
    const std::size_t dot = text.rfind('.');
    if (dot == std::string::npos) return text;
    if (HasProfileExtension(text)) {
        std::string candidate = JoinPath(folder, text);
        if (PathExists(candidate)) return candidate;
    }
    const std::string extension = text.substr(dot + 1);
    const bool hasSubfolder = PathExists(Concatenate({folder, "\\", extension}));
    return hasSubfolder ? Concatenate({extension, "\\", text.substr(0, dot)}) : text;
}

}  // namespace

std::string PlaceLoosePath(CDepot& depot, const std::string& path) {
    std::string text(TrimTrailingBlanks(path));
    // An absolute path stays where it is; the depot's server is not asked for its folder.
    const bool stays = IsFileSystemPath(text) && depot.paths->ChoiceProbesDirectory();
    if (!text.empty() && !stays) {
        const std::string folder = ProfileFolder(depot, PathForm::kStorage);
        text = FindInProfileFolder(folder, text);
        const std::string joined = IsFileSystemPath(text) ? text : JoinPath(folder, text);
        if (!EqualsNoCase(joined, text)) {
            const bool known = HasProfileExtension(text);
            text = known ? joined : joined + ExtensionForType(kSessionProfile);
        }
    }
    return StorageToDisplay(depot, text);
}

void ResolveItem(CDepots& depots, const std::string& path, CDepotItem& item, LoosePaths loosePaths,
                 FriendlyNames friendlyNames) {
    std::string text(TrimTrailingBlanks(path));
    if (friendlyNames == FriendlyNames::kTranslate) text = FriendlyToCanonical(depots, text);
    CDepot* depot = FindDepotHolding(depots, text);
    if (depot == nullptr) {
        depot = GetDefaultDepot(depots, 0);
        if (depot && loosePaths == LoosePaths::kPlace) text = PlaceLoosePath(*depot, text);
    }
    item.path = depot ? StorageToDisplay(*depot, text) : text;
    item.depot = depot;
}

}  // namespace depot
