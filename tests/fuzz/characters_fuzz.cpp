#include "fuzz/fuzz_code_page.h"
#include "platform/paths.h"
#include "platform/text.h"

using namespace depot;

namespace {

using test::Require;

// Steps through the text from the front and holds every position against what is said of it.
void TryCharacters(const std::string& text) {
    std::size_t next = 0;
    std::string copy;
    for (std::size_t at = 0; at < text.size(); ++at) {
        Require(IsCharacterStart(text, at) == (at == next));
        if (at != next) continue;
        const Character character = CharacterAt(text, at);
        AppendCharacter(copy, character);
        next = at + character.length;
    }
    Require(next == text.size() && copy == text);
}

void TryPaths(const std::string& path) {
    const std::string folder = FolderPrefix(path);
    Require(folder + NamePart(path) == path);
    Require(folder.empty() || EndsInSeparator(folder));
    Require(FindSeparator(NamePart(path)) == std::string::npos);
    Require(RemoveTrailingBackslash(path).size() + EndsInSeparator(path) == path.size());
    if (HasBrokenCharacters(path)) return;
    for (const std::string& part :
         {folder, NamePart(path), ParentFolder(path), StripExtension(path),
          CollapseBackslashes(path), JoinPath(path, path), ToLower(path)}) {
        Require(!HasBrokenCharacters(part));
    }
}

}  // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    test::FuzzInput input(data, size);
    const test::CodePageScope codePage(test::ChosenCodePage(input));
    const auto bytes = static_cast<std::size_t>(input.Number());
    const std::string find = input.Line();
    const std::string text = input.Rest();

    TryCharacters(text);
    TryPaths(text);
    const std::string_view cut = CutToBytes(text, bytes);
    Require(cut.size() <= bytes && IsCharacterStart(text, cut.size()));
    const std::string lower = ToLower(text);
    Require(ToLower(lower) == lower && EqualsNoCase(text, lower));
    const auto match = FindMatchNoCase(text, find);
    Require(match.has_value() == (FindText(lower, ToLower(find)) != std::string::npos &&
                                  !find.empty() && !text.empty()));
    if (match) Require(EqualsNoCase(text.substr(match->start, match->length), find));
    return 0;
}
