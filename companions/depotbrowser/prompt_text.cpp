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

std::wstring PromptText(UINT id) {
    const std::wstring_view text = LibraryText(LocalizedLibrary(), id);
    return std::wstring(text.empty() ? LibraryText(OwnModule(), id) : text);
}

std::optional<std::string> PromptTextForNames(unsigned id) {
    const std::wstring text = PromptText(id);
    return text.empty() ? std::nullopt : ExactAnsiFromWide(text);
}

void FreePromptTexts() {
    localized.Free();
}

}  // namespace depot
