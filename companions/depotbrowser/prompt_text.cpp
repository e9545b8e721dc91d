#include "depotbrowser/prompt_text.h"

#include <atomic>

#include "platform/directory_service.h"
#include "platform/kept_library.h"
#include "platform/module_state.h"
#include "platform/text.h"
#include "platform/wide_text.h"
#include "texts/resource_library.h"

namespace depot {
namespace {

// The folder of the product's resource files, as the directory-service library counts it.
constexpr int kResourceCategory = 1;
constexpr int kResourceItem = 3;

// The library of the user's language, kept loaded once a dialog has been shown.
KeptLibrary localized;
std::atomic<bool> lookedFor = false;

HMODULE LocalizedLibrary() {
    if (lookedFor) return localized.Get();
    const HMODULE library = localized.Keep(LoadResourceLibrary(
        EnsureTrailingBackslash(GetStandardFolder(kResourceCategory, kResourceItem)) +
        kResourceLibraryName));
    lookedFor = true;
    return library;
}

}  // namespace

std::wstring LibraryText(HMODULE library, UINT id) {
    // With no room given, the call hands out the text in place, which has no terminating NUL.
    const wchar_t* text = nullptr;
    const int length = LoadStringW(library, id, reinterpret_cast<wchar_t*>(&text), 0);
    return length > 0 ? std::wstring(text, static_cast<std::size_t>(length)) : std::wstring();
}

std::wstring PromptText(UINT id) {
    const HMODULE library = LocalizedLibrary();
    std::wstring text = library != nullptr ? LibraryText(library, id) : std::wstring();
    return text.empty() ? LibraryText(OwnModule(), id) : text;
}

std::optional<std::string> PromptTextForNames(unsigned id) {
    const std::wstring text = PromptText(id);
    return text.empty() ? std::nullopt : ExactAnsiFromWide(text);
}

void FreePromptTexts() {
    localized.Free();
}

}  // namespace depot
