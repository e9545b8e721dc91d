// The library that holds the component's texts: finding the variant of the user's language, and
// serving texts from the one that was loaded.
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "platform/handles.h"
#include "platform/win32.h"

namespace depot {

// The name of the plain library, which is loaded when the user's language has none of its own.
inline constexpr char kResourceLibraryName[] = "DepotIntr.NLS";

// Loads the variant of the library that fits the user's language, else the plain library at
// `plainPath`, as data: no code in it runs. Null when neither loads. A path without a folder loads
// nothing: the system would go looking for the library in folders that others may write to.
UniqueModule LoadResourceLibrary(const std::string& plainPath);

// Loads the library as above from `folder`, which ends in a backslash. A message box reports that
// nothing could be loaded.
UniqueModule LoadResourceLibraryOrTell(const std::string& folder);

// Makes `library`, which the caller keeps loaded, the one that texts come from; null for none.
void SetResourceLibrary(HMODULE library);

// The library that texts and dialogs come from; null when none was loaded.
HMODULE ResourceLibrary();

// Returns a string of a library, for as long as it is loaded; empty without a library, and without
// such a string.
std::wstring_view LibraryText(HMODULE library, unsigned id);

// Returns a string of the library that texts come from, in the ANSI code page; nothing without such
// a library, without such a string, and for a string that the code page cannot hold, because names
// of files are made from some of them.
std::optional<std::string> ResourceText(unsigned id);

}  // namespace depot
