#include "com/registry_script.h"

#include <algorithm>
#include <charconv>

namespace depot {
namespace {

constexpr int kMaxDepth = 32;

bool IsSpace(char c) {
    return c == ' ' || c == '\t' || c == '\r' || c == '\n';
}

bool IsPunctuation(char c) {
    return c == '{' || c == '}' || c == '=';
}

// Reads the tokens of a script one after another.
class Tokenizer {
public:
    Tokenizer(std::string_view script, const RegistryScriptReplacements& replacements)
        : rest_(script), replacements_(replacements) {}

    bool AtEnd() {
        while (!rest_.empty() && IsSpace(rest_.front())) rest_.remove_prefix(1);
        return rest_.empty();
    }

    // Whether the next token is the given punctuation, and takes it if so.
    bool Take(char punctuation) {
        if (AtEnd() || rest_.front() != punctuation) return false;
        rest_.remove_prefix(1);
        return true;
    }

    // The same for a bare word.
    bool TakeWord(std::string_view word) {
        if (AtEnd() || rest_.substr(0, BareLength()) != word) return false;
        rest_.remove_prefix(word.size());
        return true;
    }

    // Returns the next name or text, with its replacements made.
    std::optional<std::string> Next() {
        if (AtEnd() || IsPunctuation(rest_.front())) return std::nullopt;
        const std::optional<std::string> raw = rest_.front() == '\'' ? TakeQuoted() : TakeBare();
        return raw ? Replace(*raw) : std::nullopt;
    }

private:
    std::optional<std::string> TakeQuoted() {
        std::string text;
        rest_.remove_prefix(1);
        for (;;) {
            const std::size_t quote = rest_.find('\'');
            if (quote == std::string_view::npos) return std::nullopt;
            text.append(rest_, 0, quote);
            rest_.remove_prefix(quote + 1);
            if (!rest_.starts_with('\'')) return text;
            text.push_back('\'');
            rest_.remove_prefix(1);
        }
    }

    std::size_t BareLength() const {
        return std::min(rest_.find_first_of(" \t\r\n{}="), rest_.size());
    }

    std::string TakeBare() {
        std::string text(rest_.substr(0, BareLength()));
        rest_.remove_prefix(text.size());
        return text;
    }

    std::optional<std::string> Replace(std::string_view raw) const {
        std::string text;
        for (;;) {
            const std::size_t start = raw.find('%');
            text.append(raw, 0, start);
            if (start == std::string_view::npos) return text;
            const std::size_t end = raw.find('%', start + 1);
            if (end == std::string_view::npos) return std::nullopt;
            const std::string_view name = raw.substr(start + 1, end - start - 1);
            const auto replacement = replacements_.find(name);
            if (!name.empty() && replacement == replacements_.end()) return std::nullopt;
            text.append(name.empty() ? "%" : replacement->second);
            raw.remove_prefix(end + 1);
        }
    }

    std::string_view rest_;
    const RegistryScriptReplacements& replacements_;
};

class Parser {
public:
    explicit Parser(Tokenizer& tokens) : tokens_(tokens) {}

    std::optional<std::vector<RegistryScriptKey>> ParseRoots() {
        std::vector<RegistryScriptKey> roots;
        while (!tokens_.AtEnd()) {
            if (!ParseKey(roots, 0)) return std::nullopt;
        }
        return roots;
    }

private:
    // Parses one key with all that belongs to it. A value stands in a key's block only.
    bool ParseKey(std::vector<RegistryScriptKey>& keys, int depth) {
        RegistryScriptKey key;
        key.noRemove = tokens_.TakeWord("NoRemove");
        key.forceRemove = !key.noRemove && tokens_.TakeWord("ForceRemove");
        std::optional<std::string> name = tokens_.Next();
        if (!name || name->empty() || depth > kMaxDepth) return false;
        key.name = *std::move(name);
        if (tokens_.Take('=') && !(key.defaultValue = ParseData())) return false;
        if (tokens_.Take('{') && !ParseBlock(key, depth)) return false;
        keys.push_back(std::move(key));
        return true;
    }

    bool ParseBlock(RegistryScriptKey& key, int depth) {
        while (!tokens_.Take('}')) {
            const bool parsed =
                tokens_.TakeWord("val") ? ParseValue(key) : ParseKey(key.keys, depth + 1);
            if (!parsed) return false;
        }
        return true;
    }

    bool ParseValue(RegistryScriptKey& key) {
        std::optional<std::string> name = tokens_.Next();
        if (!name || !tokens_.Take('=')) return false;
        std::optional<RegistryScriptData> data = ParseData();
        if (!data) return false;
        key.values.push_back({*std::move(name), *std::move(data)});
        return true;
    }

    std::optional<RegistryScriptData> ParseData() {
        const bool isText = tokens_.TakeWord("s");
        if (!isText && !tokens_.TakeWord("d")) return std::nullopt;
        std::optional<std::string> text = tokens_.Next();
        if (!text) return std::nullopt;
        if (isText) return *std::move(text);
        std::uint32_t number = 0;
        const char* const end = text->data() + text->size();
        const auto [stop, error] = std::from_chars(text->data(), end, number);
        if (error != std::errc() || stop != end) return std::nullopt;
        return number;
    }

    Tokenizer& tokens_;
};

}  // namespace

std::optional<std::vector<RegistryScriptKey>> ParseRegistryScript(
    std::string_view script, const RegistryScriptReplacements& replacements) {
    Tokenizer tokens(script, replacements);
    return Parser(tokens).ParseRoots();
}

}  // namespace depot
