#include "texts/resource_library.h"

#include <atomic>

#include "platform/kept_library.h"
#include "platform/paths.h"
#include "platform/text.h"
#include "platform/user_notice.h"
#include "platform/wide_text.h"
#include "texts/language_settings.h"

namespace depot {
namespace {

std::atomic<HMODULE> resourceLibrary{nullptr};

// Nothing in the library is ever run: whoever can write to the folder, or name another one, gets no
// further than to the texts.
UniqueModule LoadAsData(const std::string& path) {
    return UniqueModule(
        LoadLibraryExA(path.c_str(), nullptr,
                       LOAD_LIBRARY_AS_DATAFILE_EXCLUSIVE | LOAD_LIBRARY_AS_IMAGE_RESOURCE));
}

UniqueModule LoadVariant(const std::string& plainPath) {
    const std::string language = CurrentDottedLanguage();
    if (language.empty()) return nullptr;
    const auto path = LanguageLibraryPath(ToLower(plainPath), language);
    return path ? LoadAsData(*path) : nullptr;
}

}  // namespace

UniqueModule LoadResourceLibrary(const std::string& plainPath) {
    if (!IsFileSystemPath(plainPath)) return nullptr;
    const QuietLoadScope quiet;
    UniqueModule library = LoadVariant(plainPath);
    if (!library) library = LoadAsData(plainPath);
    return library;
}

UniqueModule LoadResourceLibraryOrTell(const std::string& folder) {
    UniqueModule library = LoadResourceLibrary(folder + kResourceLibraryName);
    if (!library) {
        ShowNotice("Unable to load resource", "DepotIntr", nullptr,
                   MB_ICONHAND | MB_SYSTEMMODAL | MB_SETFOREGROUND);
    }
    return library;
}

void SetResourceLibrary(HMODULE library) {
    resourceLibrary = library;
}

HMODULE ResourceLibrary() {
    return resourceLibrary;
}

std::wstring_view LibraryText(HMODULE library, unsigned id) {
    // Without a library the system would look into the program.
    if (library == nullptr) return {};
    const wchar_t* text = nullptr;
    // With no room for a copy the call gives the place of the text in the library and its length.
    const int length = LoadStringW(library, id, reinterpret_cast<wchar_t*>(&text), 0);
    return {text, static_cast<std::size_t>(length > 0 ? length : 0)};
}

std::optional<std::string> ResourceText(unsigned id) {
    const std::wstring_view text = LibraryText(resourceLibrary, id);
    return text.empty() ? std::nullopt : ExactAnsiFromWide(text);
}

}  // namespace depot
