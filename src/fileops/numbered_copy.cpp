#include "fileops/numbered_copy.h"

#include "fileops/depot_file.h"
#include "manager/display_path.h"
#include "model/copy_name.h"
#include "model/localization.h"
#include "platform/paths.h"

namespace depot {
namespace {

constexpr int kMaxAttempts = 10000;

constexpr unsigned kPrefixFormat = 500;
constexpr unsigned kDashFormat = 501;

using MakeName = std::string (*)(std::string_view name, int number, std::string_view format);

// Returns the first display path behind `folder` that no file of the depot has, each name made from
// the one before.
std::optional<std::string> FindFreeName(CDepot& depot, const std::string& folder, std::string name,
                                        bool newStyle) {
    const MakeName makeName = newStyle ? MakeDashCopyName : MakePrefixCopyName;
    const std::string format = newStyle ? LocalizedText(kDashFormat).value_or("%s - copy%s")
                                        : LocalizedText(kPrefixFormat).value_or("Copy %sof %s");
    for (int number = 1; number <= kMaxAttempts; ++number) {
        name = makeName(name, number, format);
        std::string candidate = folder + name;
        if (FileExists(depot, candidate) == 0) return candidate;
    }
    return std::nullopt;
}

}  // namespace

std::optional<std::string> MakeNumberedCopy(DepotSession& session, const std::string& source) {
    const std::string folder = FolderPrefix(source);
    for (CDepot* depot : session.Depots()) {
        if (!MatchesPath(*depot, folder, PathForm::kDisplay, DepotName::kKey)) continue;
        std::optional<std::string> copy =
            FindFreeName(*depot, folder, NamePart(source), session.UsesNewCopyNames());
        if (!copy || CopyFile(*depot, source, *copy, depot, false, nullptr) == 0) return {};
        return copy;
    }
    return std::nullopt;
}

}  // namespace depot
