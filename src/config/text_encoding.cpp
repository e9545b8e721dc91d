#include "config/text_encoding.h"

#include <utility>

#include "platform/wide_text.h"
#include "platform/win32.h"

namespace depot {
namespace {

constexpr std::string_view kUtf8Mark = "\xEF\xBB\xBF";
constexpr std::string_view kUtf16Mark = "\xFF\xFE";
constexpr std::string_view kSwappedUtf16Mark = "\xFE\xFF";

std::string_view MarkOf(TextEncoding encoding) {
    switch (encoding) {
        case TextEncoding::kUtf8:
            return kUtf8Mark;
        case TextEncoding::kUtf16:
            return kUtf16Mark;
        case TextEncoding::kSwappedUtf16:
            return kSwappedUtf16Mark;
        default:
            return {};
    }
}

wchar_t Unit(char low, char high) {
    return static_cast<wchar_t>(static_cast<unsigned char>(low) | static_cast<unsigned char>(high)
                                                                      << 8);
}

std::optional<std::wstring> FromUtf16(std::string_view bytes, bool isSwapped) {
    if (bytes.size() % 2 != 0) return std::nullopt;
    std::wstring text(bytes.size() / 2, L'\0');
    for (std::size_t at = 0; at < text.size(); ++at) {
        const char first = bytes[2 * at], second = bytes[2 * at + 1];
        text[at] = isSwapped ? Unit(second, first) : Unit(first, second);
    }
    return text;
}

std::string ToUtf16(std::wstring_view text, bool isSwapped) {
    std::string bytes(MarkOf(isSwapped ? TextEncoding::kSwappedUtf16 : TextEncoding::kUtf16));
    bytes.reserve(bytes.size() + 2 * text.size());
    for (const wchar_t unit : text) {
        const char low = static_cast<char>(unit & 0xFF), high = static_cast<char>(unit >> 8);
        bytes.push_back(isSwapped ? high : low);
        bytes.push_back(isSwapped ? low : high);
    }
    return bytes;
}

}  // namespace

TextEncoding EncodingOf(std::string_view bytes) {
    for (const TextEncoding encoding :
         {TextEncoding::kUtf8, TextEncoding::kUtf16, TextEncoding::kSwappedUtf16}) {
        if (bytes.starts_with(MarkOf(encoding))) return encoding;
    }
    return TextEncoding::kAnsi;
}

std::optional<std::wstring> TextFromBytes(std::string_view bytes) {
    const TextEncoding encoding = EncodingOf(bytes);
    bytes.remove_prefix(MarkOf(encoding).size());
    switch (encoding) {
        case TextEncoding::kUtf8:
            return ExactWideFromCodePage(CP_UTF8, bytes);
        case TextEncoding::kUtf16:
        case TextEncoding::kSwappedUtf16:
            return FromUtf16(bytes, encoding == TextEncoding::kSwappedUtf16);
        default:
            return ExactWideFromAnsi(bytes);
    }
}

std::optional<std::string> BytesFromText(TextEncoding encoding, std::wstring_view text) {
    switch (encoding) {
        case TextEncoding::kUtf8: {
            std::optional<std::string> bytes = ExactFromWide(CP_UTF8, text);
            if (bytes) bytes->insert(0, kUtf8Mark);
            return bytes;
        }
        case TextEncoding::kUtf16:
        case TextEncoding::kSwappedUtf16:
            return ToUtf16(text, encoding == TextEncoding::kSwappedUtf16);
        default: {
            std::optional<std::string> bytes = ExactAnsiFromWide(text);
            // What begins like a mark would be read in the encoding of that.
            const bool isAnsi = bytes && EncodingOf(*bytes) == TextEncoding::kAnsi;
            return isAnsi ? std::move(bytes) : std::nullopt;
        }
    }
}

}  // namespace depot
