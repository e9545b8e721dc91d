#include "tree_pairs.h"

#include <map>

#include "platform/text.h"

namespace depot::ctl {

std::vector<NamePair> PairNames(const std::vector<TreeName>& left,
                                const std::vector<TreeName>& right) {
    std::map<std::string, std::size_t> unpaired;
    for (std::size_t index = 0; index < right.size(); ++index) {
        unpaired.emplace(ToLower(right[index].path), index);
    }
    std::vector<NamePair> pairs;
    std::vector<bool> isPaired(right.size());
    for (std::size_t index = 0; index < left.size(); ++index) {
        const auto partner = unpaired.find(ToLower(left[index].path));
        pairs.push_back({index, partner == unpaired.end() ? kNowhere : partner->second});
        if (partner == unpaired.end()) continue;
        isPaired[partner->second] = true;
        unpaired.erase(partner);
    }
    for (std::size_t index = 0; index < right.size(); ++index) {
        if (!isPaired[index]) pairs.push_back({kNowhere, index});
    }
    return pairs;
}

}  // namespace depot::ctl
