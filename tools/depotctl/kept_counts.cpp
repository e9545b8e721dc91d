#include "depotctl/kept_counts.h"

#include <algorithm>
#include <string_view>

#include "depotctl/utf8_text.h"
#include "offline/offline_location.h"
#include "platform/file_search.h"
#include "platform/file_time.h"
#include "platform/paths.h"
#include "recovery/kept_origins.h"

namespace depot::ctl {
namespace {

constexpr std::uint64_t kKilobyte = 1024;

void CountFiles(const std::string& folder, KeptCounts& counts) {
    FileSearch search(JoinPath(folder, "*"));
    WIN32_FIND_DATAA found = {};
    while (search.Next(found)) {
        const std::string_view name = found.cFileName;
        if (name.ends_with(".damaged")) ++counts.damaged;
        if (name.ends_with(".edit")) ++counts.edits;
        if (!name.ends_with(".file") && !name.ends_with(".folder")) continue;
        ++counts.files;
        counts.bytes += Joined(found.nFileSizeHigh, found.nFileSizeLow);
    }
}

}  // namespace

std::optional<KeptCounts> CountKept(CDepot& depot, CDepotPath& location,
                                    const std::vector<KeptCopy>& copies) {
    // The path is a part of what names the location.
    ExpandedPath(location);
    const auto offline = OfflineLocation::Of(location);
    if (!offline) return std::nullopt;
    KeptCounts counts;
    const std::string& folder = offline->Folder().Path();
    if (!folder.empty()) CountFiles(folder, counts);
    counts.recovered = static_cast<std::size_t>(
        std::count_if(copies.begin(), copies.end(), [&](const KeptCopy& copy) {
            return !copy.isWaiting && copy.origin && BelongsTo(*copy.origin, depot, location);
        }));
    return counts;
}

Finding KeptFinding(const KeptCounts& counts) {
    const std::uint64_t kilobytes = (counts.bytes + kKilobyte - 1) / kKilobyte;
    std::string text = Counted(counts.files, "file") + " kept, " + std::to_string(kilobytes) +
                       " KB; " + Counted(counts.edits, "edit") + " waiting";
    if (counts.damaged > 0) text += ", " + Counted(counts.damaged, "file") + " damaged";
    if (counts.recovered > 0) text += ", " + Counted(counts.recovered, "recovered file");
    const bool isClear = counts.edits + counts.damaged + counts.recovered == 0;
    if (isClear) return Good("offline", text);
    return Remark("offline", text,
                  counts.edits + counts.recovered > 0
                      ? "see \"depotctl recovered\""
                      : "what is damaged is not used; the files *.damaged may be deleted");
}

Json KeptJson(const KeptCounts& counts) {
    return {{"files", counts.files},
            {"bytes", counts.bytes},
            {"edits", counts.edits},
            {"damaged", counts.damaged},
            {"recovered", counts.recovered}};
}

}  // namespace depot::ctl
