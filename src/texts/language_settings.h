// Where the choice of the language takes its inputs from: the locale key and the system.
#pragma once

#include <string>

#include "platform/win32.h"
#include "texts/language_choice.h"

namespace depot {

// The key, below the user's and the machine's hive, that holds the language settings.
inline constexpr char kLocaleKey[] = "Software\\Quillon\\Farrow\\13.00\\Locale";

// The bytes that a language setting and a chosen language name may take, NUL included.
inline constexpr DWORD kLanguageTextBytes = 260;

// Reads the settings. The search method and the default language come from the user's key, the
// available languages from the machine's; the other hive is asked only when that key cannot be
// opened, not when a value is missing in it. The machine-wide default comes from the machine's key
// alone. A value of more than kLanguageTextBytes counts as absent. A policy wins over each of them.
LanguageSettings ReadLanguageSettings();

// Returns the language of the user's interface as `systemLibrary` reports it, or the user's format
// language on a system whose library does not report it.
LANGID UserLanguageId(HMODULE systemLibrary = GetModuleHandleA("kernel32.dll"));

// Returns the language code of the user interface, such as "eng", as the registry and the system
// have it now; empty when no language can be found.
std::string CurrentLanguageCode();

// The same with the dot before it, as ChooseDottedLanguage gives it; empty when there is none.
std::string CurrentDottedLanguage();

}  // namespace depot
