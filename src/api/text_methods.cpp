// The methods that read and write whole files as text.
#include <limits>

#include "api/depot_intr_api.h"
#include "api/place_method.h"
#include "config/text_encoding.h"
#include "store/folder_store.h"

namespace depot {
namespace {

// What is converted at once: the system counts in its numbers, and up to four bytes a character.
constexpr std::size_t kMostBytes = std::numeric_limits<int>::max() / 4;

std::string_view BytesOf(const FileBuffer& file) {
    return {reinterpret_cast<const char*>(file.bytes.get()), file.length};
}

Result Unconvertible(const AnyPlace& place) {
    return SystemError(ERROR_NO_UNICODE_TRANSLATION, place.path);
}

Result ReadText(const AnyPlace& place, UniqueBstr& text) {
    FileBuffer file;
    Result read = ReadFileAt(place, file);
    if (!read) return read;
    if (file.length > kMostBytes) return SystemError(ERROR_FILE_TOO_LARGE, place.path);
    const std::optional<std::wstring> wide = TextFromBytes(BytesOf(file));
    if (!wide) return Unconvertible(place);
    text = NewWideBstr(*wide);
    return text ? Result() : SystemError(ERROR_NOT_ENOUGH_MEMORY, place.path);
}

// The encoding in which a text replaces what the file holds.
Result EncodingFor(const AnyPlace& place, TEXT_ENCODING wanted, TextEncoding& encoding) {
    encoding = wanted == TEXT_UTF8    ? TextEncoding::kUtf8
               : wanted == TEXT_UTF16 ? TextEncoding::kUtf16
                                      : TextEncoding::kAnsi;
    FileBuffer file;
    // Looked at in any case: what is no file, or cannot be seen, is not replaced.
    Result read = ReadFileAt(place, file);
    if (read.Is(Reason::kMissing)) return {};
    if (read && wanted == TEXT_AS_IT_IS) encoding = EncodingOf(BytesOf(file));
    return read;
}

Result WriteText(const AnyPlace& place, std::wstring_view text, TEXT_ENCODING wanted) {
    if (wanted < TEXT_AS_IT_IS || wanted > TEXT_UTF16) {
        return SystemError(ERROR_INVALID_PARAMETER, place.path);
    }
    if (text.size() > kMostBytes) return SystemError(ERROR_FILE_TOO_LARGE, place.path);
    TextEncoding encoding = TextEncoding::kAnsi;
    Result known = EncodingFor(place, wanted, encoding);
    if (!known) return known;
    const std::optional<std::string> bytes = BytesFromText(encoding, text);
    return bytes ? WriteFileAt(place, BufferOf(*bytes)) : Unconvertible(place);
}

}  // namespace

STDMETHODIMP CDepotIntrApi::ReadText(LONG_PTR lDPIntr, BSTR bstrFile, BSTR* pbstrText) noexcept {
    if (pbstrText == nullptr) return RefuseMethod();
    *pbstrText = nullptr;
    return RunOnSession(lDPIntr, WithoutHandle::kMakeTemporary, [&](DepotSession& session) {
        AnyPlace place;
        Result read = FindPlace(session, bstrFile, place);
        UniqueBstr text;
        if (read) read = depot::ReadText(place, text);
        *pbstrText = text.release();
        return read;
    });
}

STDMETHODIMP CDepotIntrApi::WriteText(LONG_PTR lDPIntr, BSTR bstrFile, BSTR bstrText,
                                      TEXT_ENCODING encoding, VARIANT_BOOL* pbDone) noexcept {
    return RunForDone(lDPIntr, pbDone, [&](DepotSession& session) {
        AnyPlace place;
        Result written = FindPlace(session, bstrFile, place);
        return written ? depot::WriteText(place, WideText(bstrText), encoding) : written;
    });
}

}  // namespace depot
