// The language settings of a test: both locale keys, which do not exist at its beginning and end.
#pragma once

#include <string>

#include "support/scratch.h"
#include "texts/language_settings.h"

namespace depot::test {

inline constexpr char kMethod[] = "Language Search Method";
inline constexpr char kDefault[] = "Default UI Language";
inline constexpr char kAvailable[] = "Available UI Languages";
inline constexpr char kGlobalDefault[] = "Global Default UI Language";

struct LocaleWorld {
    // Makes `language` the configured one, whatever the user's own is.
    void Configure(const std::string& language, const std::string& available) const {
        user.Text("", kMethod, "1");
        user.Text("", kDefault, language);
        machine.Text("", kAvailable, available);
    }

    ScratchKey user{HKEY_CURRENT_USER, kLocaleKey};
    ScratchKey machine{HKEY_LOCAL_MACHINE, kLocaleKey};
};

}  // namespace depot::test
