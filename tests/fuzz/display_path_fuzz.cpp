#include "fuzz/fuzz_code_page.h"
#include "manager/display_path_text.h"
#include "platform/paths.h"
#include "platform/text.h"

using namespace depot;

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    test::FuzzInput input(data, size);
    const test::CodePageScope codePage(test::ChosenCodePage(input));
    const std::string name = input.Line();
    const std::string replacement = input.Line();
    const std::string path = input.Rest();

    const std::string prefix = DisplayPrefix(name);
    test::Require(MatchesPrefix(prefix + path, prefix));
    const std::string folder = FolderDisplayPath(name, path);
    test::Require(folder.starts_with("<" + name + ">") && folder.ends_with("\\"));
    const DisplayPathParts parts = SplitDisplayPath(path);
    test::Require(parts.depotName.size() <= path.size() && parts.relative.size() <= path.size());

    const std::string replaced = ReplaceAllNoCase(path, prefix, replacement);
    test::Require(replaced.size() <= path.size() * (replacement.size() + 1));
    test::Require(ReplaceAllNoCase(path, prefix, ToLower(prefix)) == path);
    test::Require(FolderPrefix(path) + NamePart(path) == path);
    test::Require(StripExtension(path).size() <= path.size());
    test::Require(EnsureTrailingBackslash(path).empty() == path.empty());
    return 0;
}
