#include "directory/comparable_dn.h"
#include "directory/dn.h"
#include "directory/dn_escapes.h"

#include "fuzz/fuzz_code_page.h"
#include "platform/local_name.h"

using namespace depot;

namespace {

constexpr std::size_t kLongestObjectName = 260;

// Whether a character has two bytes of which the second is a sign or a blank: a lead byte is not
// followed by these in any code page.
bool HasImpossibleCharacters(const std::string& name) {
    for (std::size_t at = 0; at < name.size();) {
        const std::size_t length = CharacterLength(name, at);
        const auto last = static_cast<unsigned char>(name[at + length - 1]);
        if (length == 2 && last < '0') return true;
        at += length;
    }
    return false;
}

void TryNames(const std::string& name, const NamingAttributes& attributes) {
    const std::string component = EntryDN(attributes.file, name, "");
    for (const FileExtension extension : {FileExtension::kKeep, FileExtension::kStrip}) {
        const auto split = SplitFirstComponent(component, attributes, extension);
        if (split) test::Require(split->name.size() <= component.size());
    }
    SplitFirstComponent(name, attributes);
    const std::string escaped = EscapedName(name);
    UnescapedName(name);
    // No name holds a null character: one in an entry's name stays the escape that it is.
    if (HasBrokenCharacters(name) || name.find('\0') != std::string::npos) return;
    if (HasImpossibleCharacters(name)) return;
    test::Require(UnescapedName(escaped) == name);
    // Nothing of the name is taken for a part of the whole.
    const std::string whole = ComparableDN("cn=" + escaped + ",o=x");
    test::Require(whole.starts_with("cn=") && whole.ends_with(",o=x"));
    test::Require(FindAnyCharacter(whole, ",+=", 3) == whole.size() - 4);
    test::Require(AreOneName(name, name) && !FindDoubt(whole, whole));
    if (IsSafeLocalName(name)) {
        test::Require(FindAnyCharacter(name, "\\/:*?") == std::string::npos && name != "..");
        test::Require(!HasBrokenCharacters(name));
    }
}

}  // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    test::FuzzInput input(data, size);
    const test::CodePageScope codePage(test::ChosenCodePage(input));
    NamingAttributes attributes;
    attributes.folder = input.Line();
    attributes.file = input.Line();
    const std::string path = input.Rest();

    PathToDN(path, attributes);
    TryNames(path, attributes);
    const auto keep = [](std::string_view utf8) -> std::optional<std::string> {
        return std::string(utf8);
    };
    test::Require(DecodeNonAsciiEscapes(path, keep).size() <= path.size());
    const auto refuse = [](std::string_view) -> std::optional<std::string> { return std::nullopt; };
    test::Require(DecodeNonAsciiEscapes(path, refuse) == path);
    test::Require(ServerKey(path, 4294967295u).size() <= kLongestObjectName);
    test::Require(SecuredServerKey(path, 4294967295u).size() <= kLongestObjectName);
    return 0;
}
