// Measures the component against the raw system calls that do the same work: everything, or the
// groups that are named on the command line.
#include <algorithm>
#include <cstdio>
#include <functional>
#include <string>
#include <vector>

#include "bench/benches.h"
#include "bench/comparison.h"

namespace depot::bench {
namespace {

struct Group {
    std::string name;
    std::function<void(IDepotIntrApi*)> measure;
};

const std::vector<Group>& Groups() {
    static const std::vector<Group> groups = {
        {"sessions", MeasureSessions},
        {"values", MeasureValues},
        {"macros", [](IDepotIntrApi*) { MeasureMacros(); }},
        {"directory", [](IDepotIntrApi*) { MeasureDirectory(); }},
        {"working-copies", MeasureWorkingCopies},
        {"apart", [](IDepotIntrApi*) { MeasureApart(); }},
        {"listings", [](IDepotIntrApi*) { MeasureListings(); }},
        {"transfers", [](IDepotIntrApi*) { MeasureTransfers(); }},
        {"round-trips", MeasureRoundTrips},
    };
    return groups;
}

bool IsWanted(const std::string& group, const std::vector<std::string>& wanted) {
    return wanted.empty() || std::find(wanted.begin(), wanted.end(), group) != wanted.end();
}

}  // namespace
}  // namespace depot::bench

int main(int count, char** words) {
    using namespace depot::bench;
    const std::vector<std::string> wanted(words + 1, words + count);
    CoInitialize(nullptr);
    if (IsWanted("library", wanted)) MeasureLibrary();
    {
        const Api api = CreateApi();
        for (const Group& group : Groups()) {
            if (IsWanted(group.name, wanted)) group.measure(api.get());
        }
    }
    CoUninitialize();
    PrintSummary();
    return 0;
}
