#include <algorithm>

#include "fileops/file_filter.h"
#include "fuzz/fuzz_code_page.h"

using namespace depot;

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    test::FuzzInput input(data, size);
    const test::CodePageScope codePage(test::ChosenCodePage(input));
    const std::string filter = input.Line();
    const std::string subPath = input.Line();
    const std::string path = input.Rest();

    for (const bool foldersOnly : {false, true}) {
        const ListingRequest request = MakeListingRequest(path, filter, subPath, foldersOnly);
        PassesFilter(path, request.filter);
    }
    test::Require(PassesFilter(path, ".*"));
    std::vector<bool> wanted;
    for (const char byte : path) wanted.push_back((byte & 1) != 0);
    const std::vector<bool> survivors = SurvivorsOfTypeFilter(wanted);
    test::Require(survivors.size() == wanted.size());
    for (std::size_t index = 0; index < wanted.size(); ++index) {
        test::Require(!wanted[index] || survivors[index]);
    }
    return 0;
}
