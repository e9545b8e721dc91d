#include "support/code_pages.h"

#include <map>

#ifdef _WIN32
#include "platform/system_code_page.h"
#include "platform/wide_text.h"
#else
#include <iconv.h>
#include <wctype.h>

#include <cerrno>
#include <clocale>
#include <cstdlib>
#include <utility>
#include <vector>
#endif

namespace depot::test {
namespace {

#ifdef _WIN32

CodePage Describe(unsigned number) {
    return DescribeSystemCodePage(number);
}

#else

struct LeadRange {
    unsigned codePage;
    unsigned first;
    unsigned last;
};

constexpr LeadRange kLeadRanges[] = {
    {932, 0x81, 0x9F}, {932, 0xE0, 0xFC}, {936, 0x81, 0xFE}, {949, 0x81, 0xFE}, {950, 0x81, 0xFE}};

LeadBytes LeadBytesOf(unsigned number) {
    LeadBytes leads{};
    for (const LeadRange& range : kLeadRanges) {
        if (range.codePage != number) continue;
        for (unsigned byte = range.first; byte <= range.last; ++byte) leads[byte] = true;
    }
    return leads;
}

CodePageKind KindOf(unsigned number) {
    if (number == 65001) return CodePageKind::kUtf8;
    return number < 1000 ? CodePageKind::kDoubleByte : CodePageKind::kSingleByte;
}

std::string CharsetOf(unsigned number) {
    return number == 65001 ? "UTF-8" : "CP" + std::to_string(number);
}

// What cannot be converted gives an empty text.
std::string Convert(const char* to, const char* from, std::string text) {
    const iconv_t converter = iconv_open(to, from);
    // A system without the charset could only test something else.
    if (converter == reinterpret_cast<iconv_t>(-1)) std::abort();
    std::string converted(4 * text.size(), '\0');
    char* input = text.data();
    char* output = converted.data();
    std::size_t inputLeft = text.size(), room = converted.size();
    const bool done =
        iconv(converter, &input, &inputLeft, &output, &room) != static_cast<std::size_t>(-1);
    iconv_close(converter);
    converted.resize(done ? converted.size() - room : 0);
    return converted;
}

template <class Change>
std::u16string ChangeLetters(const std::u16string& letters, Change change) {
    static const locale_t unicode = newlocale(LC_CTYPE_MASK, "C.UTF-8", nullptr);
    if (unicode == nullptr) std::abort();
    std::u16string changed;
    for (const char16_t letter : letters) {
        const wint_t other = change(letter, unicode);
        changed.push_back(other < 0x10000 ? static_cast<char16_t>(other) : letter);
    }
    return changed;
}

CodePage Describe(unsigned number) {
    return DescribeCodePage(
        KindOf(number), LeadBytesOf(number),
        {AllLetters(),
         [](const std::u16string& letters) { return ChangeLetters(letters, towlower_l); },
         [](const std::u16string& letters) { return ChangeLetters(letters, towupper_l); },
         [number](char16_t letter) {
             return Encoded(number, {&letter, 1});
         }});
}

#endif

}  // namespace

const CodePage& DescribedCodePage(unsigned number) {
    static std::map<unsigned, CodePage> descriptions;
    const auto known = descriptions.find(number);
    if (known != descriptions.end()) return known->second;
    return descriptions.emplace(number, Describe(number)).first->second;
}

std::string Encoded(unsigned number, std::u16string_view text) {
#ifdef _WIN32
    return ExactFromWide(number, std::wstring(text.begin(), text.end())).value_or(std::string());
#else
    const std::string units(reinterpret_cast<const char*>(text.data()),
                            text.size() * sizeof(char16_t));
    const std::string charset = CharsetOf(number);
    std::string narrow = Convert(charset.c_str(), "UTF-16LE", units);
    return Convert("UTF-16LE", charset.c_str(), narrow) == units ? narrow : std::string();
#endif
}

}  // namespace depot::test
