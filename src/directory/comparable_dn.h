// Comparing names of entries as text, without asking a server.
#pragma once

#include <string>
#include <string_view>

namespace depot {

// Returns the text by which two names of entries compare: in lower case, with each run of blanks as
// one and none at the ends of names and values, and with escapes in one form. Servers match names
// in this way.
std::string ComparableDN(std::string_view dn);

// Returns the name of the entry above, as it is spelled in `dn`; empty where there is none.
std::string_view ParentDN(std::string_view dn);

}  // namespace depot
