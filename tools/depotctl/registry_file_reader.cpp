// Reading .reg files.
#include <optional>

#include "depotctl/ascii.h"
#include "depotctl/definition_file.h"
#include "depotctl/utf8_text.h"

namespace depot::ctl {
namespace {

constexpr std::string_view kHeading = "Windows Registry Editor Version 5.00";

std::string_view Trimmed(std::string_view text) {
    const auto isBlank = [](char c) { return c == ' ' || c == '\t' || c == '\r'; };
    while (!text.empty() && isBlank(text.front())) text.remove_prefix(1);
    while (!text.empty() && isBlank(text.back())) text.remove_suffix(1);
    return text;
}

// Takes a text in quotation marks off the line.
std::optional<std::string> TakeQuoted(std::string_view& line) {
    if (line.empty() || line.front() != '"') return std::nullopt;
    std::string text;
    for (std::size_t at = 1;;) {
        const std::size_t special = FindAnyAscii(line, "\"\\", at);
        if (special == std::string::npos) return std::nullopt;
        text += line.substr(at, special - at);
        if (line[special] == '"') {
            line.remove_prefix(special + 1);
            return text;
        }
        // What follows a backslash stands for itself.
        if (special + 1 == line.size()) return std::nullopt;
        text += line[special + 1];
        at = special + 2;
    }
}

// "41,00,00,00" as text, up to its end.
std::optional<std::string> TextOfBytes(std::string_view list) {
    std::u16string units;
    std::optional<std::uint32_t> low;
    while (!list.empty()) {
        const std::size_t comma = std::min(FindAscii(list, ','), list.size());
        const std::string_view digits = Trimmed(list.substr(0, comma));
        const auto byte = digits.size() > 2 ? std::nullopt : NumberIn(digits, 16);
        if (!byte) return std::nullopt;
        list.remove_prefix(std::min(comma + 1, list.size()));
        if (low) units += static_cast<char16_t>(*low | *byte << 8U);
        low = low ? std::nullopt : byte;
    }
    if (low) return std::nullopt;
    return Utf8FromUtf16(units.substr(0, units.find(u'\0')));
}

std::optional<RawValue> ValueOf(const std::string& name, std::string_view data) {
    constexpr std::string_view kNumber = "dword:", kText = "hex(1):", kExpandable = "hex(2):";
    if (data.starts_with('"')) {
        const auto text = TakeQuoted(data);
        if (!text || !Trimmed(data).empty()) return std::nullopt;
        return TextValue(name, *text);
    }
    if (data.starts_with(kNumber)) {
        const auto number = NumberIn(data.substr(kNumber.size()), 16);
        return number ? std::optional(NumberValue(name, *number)) : std::nullopt;
    }
    const bool isExpandable = data.starts_with(kExpandable);
    if (!isExpandable && !data.starts_with(kText)) return std::nullopt;
    const auto text = TextOfBytes(data.substr(kText.size()));
    if (!text) return std::nullopt;
    RawValue value = TextValue(name, *text);
    if (isExpandable) value.type = kRegistryExpandableText;
    return value;
}

class RegistryFileReader {
public:
    RegistryFileReader(std::string_view text, std::string_view depotsKey)
        : text_(text), definitions_(depotsKey) {}

    ReadDefinitionsResult Read() {
        if (NextLine() != kHeading) return Refused("it does not begin as a .reg file");
        while (!text_.empty()) {
            const std::string line = NextLine();
            if (line.empty() || line.front() == ';') continue;
            const std::string problem = line.front() == '[' ? TakeKey(line) : TakeValue(line);
            if (!problem.empty()) return Refused(problem);
        }
        return {definitions_.Take(), {}};
    }

private:
    ReadDefinitionsResult Refused(const std::string& problem) const {
        return {{}, "line " + std::to_string(line_) + ": " + problem};
    }

    // One line, with those that continue it.
    std::string NextLine() {
        std::string line;
        for (;;) {
            ++line_;
            const std::size_t end = std::min(FindAscii(text_, '\n'), text_.size());
            line += Trimmed(text_.substr(0, end));
            text_.remove_prefix(std::min(end + 1, text_.size()));
            const bool isContinued = line.ends_with(",\\") && !text_.empty();
            if (!isContinued) return line;
            line.pop_back();
        }
    }

    std::string TakeKey(std::string_view line) {
        if (!EndsInAscii(line, ']')) return "the key has no end";
        line = line.substr(1, line.size() - 2);
        const bool isRemoved = line.starts_with('-');
        if (isRemoved) line.remove_prefix(1);
        isInKey_ = definitions_.Enter(line);
        if (!isInKey_) return "the key is no depot's: " + std::string(line);
        if (isRemoved) definitions_.RemoveAll();
        isInKey_ = !isRemoved;
        return {};
    }

    std::string TakeValue(std::string_view line) {
        if (!isInKey_) return "the value stands in no key";
        const auto name = TakeQuoted(line);
        line = Trimmed(line);
        if (!name || name->empty() || !line.starts_with('=')) return "this is no value of a depot";
        const std::string_view data = Trimmed(line.substr(1));
        if (data == "-") {
            definitions_.Remove(*name);
            return {};
        }
        auto value = ValueOf(*name, data);
        if (!value) return "the data of " + *name + " is neither a text nor a number";
        definitions_.Write(*std::move(value));
        return {};
    }

    std::string_view text_;
    DefinitionCollector definitions_;
    std::size_t line_ = 0;
    bool isInKey_ = false;
};

}  // namespace

ReadDefinitionsResult ReadRegistryFile(std::string_view text, std::string_view depotsKey) {
    return RegistryFileReader(text, depotsKey).Read();
}

}  // namespace depot::ctl
