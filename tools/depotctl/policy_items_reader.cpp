// Reading lists of registry items of group policy preferences: as much of XML as these have.
#include <algorithm>
#include <map>
#include <optional>

#include "depotctl/ascii.h"
#include "depotctl/definition_file.h"
#include "depotctl/utf8_text.h"

namespace depot::ctl {
namespace {

bool IsBlank(char c) {
    return c == ' ' || c == '\t' || c == '\r' || c == '\n';
}

bool IsNameCharacter(char c) {
    return IsLetter(c) || IsDigit(c) || c == ':' || c == '_' || c == '-' || c == '.';
}

// "#65" and "#x41".
std::optional<std::uint32_t> CodeOf(std::string_view name) {
    const bool isHex = name.starts_with("#x");
    if (!isHex && !name.starts_with('#')) return std::nullopt;
    const auto code = NumberIn(name.substr(isHex ? 2 : 1), isHex ? 16 : 10);
    const bool isCharacter =
        code && *code >= ' ' && *code <= 0x10FFFF && !(*code >= 0xD800 && *code <= 0xDFFF);
    return isCharacter ? code : std::nullopt;
}

// The text of an attribute; nothing for a reference that stands for nothing.
std::optional<std::string> Unescaped(std::string_view text) {
    static const std::map<std::string_view, char> kNamed = {
        {"amp", '&'}, {"lt", '<'}, {"gt", '>'}, {"quot", '"'}, {"apos", '\''}};
    std::string plain;
    while (!text.empty()) {
        const std::size_t mark = std::min(FindAscii(text, '&'), text.size());
        plain += text.substr(0, mark);
        text.remove_prefix(mark);
        if (text.empty()) break;
        const std::size_t end = FindAscii(text, ';');
        if (end == std::string::npos) return std::nullopt;
        const std::string_view name = text.substr(1, end - 1);
        const auto named = kNamed.find(name);
        const auto code = named == kNamed.end() ? CodeOf(name) : std::uint32_t{0};
        if (!code) return std::nullopt;
        if (named != kNamed.end()) plain += named->second;
        if (named == kNamed.end()) AppendUtf8(plain, *code);
        text.remove_prefix(end + 1);
    }
    return plain;
}

using Attributes = std::map<std::string, std::string, std::less<>>;

struct Element {
    std::string name;
    bool isEnd = false;
    bool isEmpty = false;
    Attributes attributes;

    std::string Get(std::string_view attribute) const {
        const auto found = attributes.find(attribute);
        return found == attributes.end() ? std::string() : found->second;
    }
};

// Takes elements off a text, one after the other.
class ElementReader {
public:
    explicit ElementReader(std::string_view text) : text_(text) {}

    // Nothing at the end, and where the text is damaged.
    std::optional<Element> Next() {
        while (!text_.empty()) {
            if (IsBlank(text_.front())) {
                text_.remove_prefix(1);
            } else if (!SkipBeside()) {
                return TakeElement();
            }
        }
        return std::nullopt;
    }
    bool IsDamaged() const { return isDamaged_; }

private:
    // Comments and instructions. A document type is not taken.
    bool SkipBeside() { return SkipFrom("<!--", "-->") || SkipFrom("<?", "?>"); }
    bool SkipFrom(std::string_view start, std::string_view end) {
        if (!text_.starts_with(start)) return false;
        const std::size_t at = text_.find(end, start.size());
        if (at == std::string_view::npos) return false;
        text_.remove_prefix(at + end.size());
        return true;
    }

    std::optional<Element> TakeElement() {
        Element element;
        isDamaged_ = !(Take('<') && TakeInside(element));
        return isDamaged_ ? std::nullopt : std::optional(std::move(element));
    }
    bool TakeInside(Element& element) {
        element.isEnd = Take('/');
        element.name = TakeName();
        if (element.name.empty()) return false;
        for (;;) {
            SkipBlanks();
            if (Take('>')) return true;
            if (Take('/')) {
                element.isEmpty = true;
                return Take('>');
            }
            if (!TakeAttribute(element)) return false;
        }
    }
    bool TakeAttribute(Element& element) {
        std::string name = TakeName();
        SkipBlanks();
        if (name.empty() || !Take('=')) return false;
        SkipBlanks();
        const char quote = text_.empty() ? '\0' : text_.front();
        if (quote != '"' && quote != '\'') return false;
        const std::size_t end = FindAscii(text_, quote, 1);
        if (end == std::string::npos) return false;
        const auto value = Unescaped(text_.substr(1, end - 1));
        text_.remove_prefix(end + 1);
        return value && element.attributes.emplace(std::move(name), *value).second;
    }

    bool Take(char c) {
        if (!text_.starts_with(c)) return false;
        text_.remove_prefix(1);
        return true;
    }
    void SkipBlanks() {
        while (!text_.empty() && IsBlank(text_.front())) text_.remove_prefix(1);
    }
    std::string TakeName() {
        const auto end = std::find_if_not(text_.begin(), text_.end(), IsNameCharacter);
        std::string name(text_.begin(), end);
        text_.remove_prefix(name.size());
        return name;
    }

    std::string_view text_;
    bool isDamaged_ = false;
};

class PolicyItemsReader {
public:
    PolicyItemsReader(std::string_view text, std::string_view depotsKey)
        : elements_(text), definitions_(depotsKey) {}

    ReadDefinitionsResult Read() {
        std::string problem;
        while (problem.empty()) {
            const auto element = elements_.Next();
            if (!element) break;
            problem = TakeElement(*element);
        }
        if (problem.empty() && (elements_.IsDamaged() || !open_.empty())) {
            problem = "it is no whole list of registry items";
        }
        if (!problem.empty()) return {{}, problem};
        return {definitions_.Take(), {}};
    }

private:
    std::string TakeElement(const Element& element) {
        if (element.isEnd) {
            if (open_.empty() || open_.back() != element.name) return "its elements do not match";
            open_.pop_back();
            return {};
        }
        if (open_.empty() && element.name != "RegistrySettings" && element.name != "Collection") {
            return "it is no list of registry items";
        }
        if (element.name == "Registry") isSwitchedOff_ = element.Get("disabled") == "1";
        if (element.name == "Filters")
            return "it has items with conditions, which are not looked at";
        if (!element.isEmpty) open_.push_back(element.name);
        return element.name == "Properties" && !isSwitchedOff_ ? TakeItem(element) : std::string();
    }

    std::string TakeItem(const Element& item) {
        const std::string path = item.Get("hive") + "\\" + item.Get("key");
        const std::string name = item.Get("name"), action = item.Get("action");
        if (!definitions_.Enter(path)) return "the key is no depot's: " + path;
        if (action == "D") {
            if (name.empty()) definitions_.RemoveAll();
            if (!name.empty()) definitions_.Remove(name);
            return {};
        }
        const bool isWritten = action == "C" || action == "R" || action == "U" || action.empty();
        if (!isWritten || name.empty()) return "an item is no value of a depot";
        return TakeValue(item, name);
    }

    std::string TakeValue(const Element& item, const std::string& name) {
        const std::string type = item.Get("type"), data = item.Get("value");
        if (type == "REG_DWORD") {
            const auto number = NumberIn(data, 16);
            if (!number) return "the data of " + name + " is no number";
            definitions_.Write(NumberValue(name, *number));
            return {};
        }
        if (type != "REG_SZ" && type != "REG_EXPAND_SZ") {
            return "the data of " + name + " is neither a text nor a number";
        }
        RawValue value = TextValue(name, data);
        if (type == "REG_EXPAND_SZ") value.type = kRegistryExpandableText;
        definitions_.Write(std::move(value));
        return {};
    }

    ElementReader elements_;
    DefinitionCollector definitions_;
    std::vector<std::string> open_;
    bool isSwitchedOff_ = false;
};

}  // namespace

ReadDefinitionsResult ReadPolicyItems(std::string_view text, std::string_view depotsKey) {
    return PolicyItemsReader(text, depotsKey).Read();
}

namespace {

// Nothing for halves of characters, which would be others afterwards.
std::optional<std::string> Utf8OfUtf16(std::string_view bytes) {
    std::u16string units;
    for (std::size_t at = 0; at + 1 < bytes.size(); at += 2) {
        units += static_cast<char16_t>(static_cast<unsigned char>(bytes[at]) |
                                       static_cast<unsigned char>(bytes[at + 1]) << 8U);
    }
    std::string text = Utf8FromUtf16(units);
    if (bytes.size() % 2 != 0 || Utf16(text) != units) return std::nullopt;
    return text;
}

std::optional<std::string> TextOf(std::string_view bytes) {
    if (bytes.starts_with("\xFF\xFE")) return Utf8OfUtf16(bytes.substr(2));
    std::string text(bytes.substr(bytes.starts_with("\xEF\xBB\xBF") ? 3 : 0));
    if (Utf8FromUtf16(Utf16(text)) != text) return std::nullopt;
    return text;
}

}  // namespace

ReadDefinitionsResult ReadDefinitionFile(std::string_view bytes, std::string_view depotsKey) {
    const std::optional<std::string> text = TextOf(bytes);
    if (!text || FindAscii(*text, '\0') != std::string::npos) {
        return {{}, "it is no text in UTF-8 or UTF-16"};
    }
    const auto start = std::find_if_not(text->begin(), text->end(), IsBlank);
    const bool isItems = start != text->end() && *start == '<';
    return isItems ? ReadPolicyItems(*text, depotsKey) : ReadRegistryFile(*text, depotsKey);
}

}  // namespace depot::ctl
