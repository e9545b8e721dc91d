#include "api/chosen_files.h"

#include <algorithm>

#include "fuzz/fuzz_code_page.h"

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    depot::test::FuzzInput input(data, size);
    const depot::test::CodePageScope codePage(depot::test::ChosenCodePage(input));
    const auto bound = static_cast<std::int16_t>(input.Number() * 257);
    std::vector<std::string> paths;
    while (!input.Rest().empty()) {
        std::string path = input.Line();
        std::replace(path.begin(), path.end(), '\0', '0');
        paths.push_back(path);
    }
    const std::string list = depot::ChosenFileList(paths, bound);
    depot::test::Require(list.empty() == paths.empty());
    if (paths.empty()) return 0;
    depot::test::Require(list.ends_with(std::string(2, '\0')) || list.size() == 2);
    const auto parts = std::count(list.begin(), list.end(), '\0');
    depot::test::Require(parts >= 2 && static_cast<std::size_t>(parts) <= paths.size() + 2);
    return 0;
}
