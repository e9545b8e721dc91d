// The component's languages, as tests name them.
#pragma once

#include <string>
#include <vector>

#include "config/languages.h"

namespace depot::test {

// The list that an installation with every language has, such as "eng fra".
inline std::string AllLanguages() {
    std::string list;
    for (const Language& language : kLanguages) {
        list += (list.empty() ? "" : " ") + std::string(language.code);
    }
    return list;
}

// The names of the libraries of texts; the plain one is the first.
inline std::vector<std::string> LanguageLibraries() {
    std::vector<std::string> names = {"DepotIntr.NLS"};
    for (const Language& language : kLanguages) {
        names.push_back("depotintr." + std::string(language.code) + ".nls");
    }
    return names;
}

}  // namespace depot::test
