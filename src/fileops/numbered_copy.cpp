#include "fileops/numbered_copy.h"

#include "fileops/depot_file.h"
#include "fileops/open_stores.h"
#include "manager/display_path.h"
#include "model/localization.h"
#include "platform/paths.h"

namespace depot {
namespace {

constexpr unsigned kPrefixFormat = 500;
constexpr unsigned kDashFormat = 501;

std::string FormatOf(CopyNameStyle style) {
    return style == CopyNameStyle::kDash ? LocalizedText(kDashFormat).value_or("%s - copy%s")
                                         : LocalizedText(kPrefixFormat).value_or("Copy %sof %s");
}

enum class Work { kFindName, kCopy };

std::optional<std::string> CopyNextToItself(CDepot& depot, const std::string& source,
                                            CopyNameStyle style, Work work) {
    const std::string folder = FolderPrefix(source);
    OpenStores stores;
    if (!stores.Hold(PlaceOf(depot, folder))) return std::nullopt;
    const auto name = FindFreeCopyName(
        NamePart(source), style, FormatOf(style),
        [&](const std::string& taken) { return FileExists(depot, folder + taken) != 0; });
    if (!name) return std::nullopt;
    const std::string copy = folder + *name;
    if (work == Work::kCopy && !CopyToFreeName(depot, source, copy)) return std::nullopt;
    return copy;
}

std::optional<std::string> DoInItsDepot(CDepots& depots, const std::string& source,
                                        CopyNameStyle style, Work work) {
    const std::string folder = FolderPrefix(source);
    for (CDepot* depot : depots) {
        if (MatchesPath(*depot, folder, PathForm::kDisplay, DepotName::kKey)) {
            return CopyNextToItself(*depot, source, style, work);
        }
    }
    return std::nullopt;
}

CopyNameStyle StyleOf(const DepotSession& session) {
    return session.UsesNewCopyNames() ? CopyNameStyle::kDash : CopyNameStyle::kPrefix;
}

}  // namespace

std::optional<std::string> MakeNumberedCopy(CDepots& depots, const std::string& source,
                                            CopyNameStyle style) {
    return DoInItsDepot(depots, source, style, Work::kCopy);
}

std::optional<std::string> MakeNumberedCopy(DepotSession& session, const std::string& source) {
    return MakeNumberedCopy(session.Depots(), source, StyleOf(session));
}

std::optional<std::string> FindNumberedCopy(DepotSession& session, const std::string& source) {
    return DoInItsDepot(session.Depots(), source, StyleOf(session), Work::kFindName);
}

}  // namespace depot
