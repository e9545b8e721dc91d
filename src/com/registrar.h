// Writing the registry content that a script resource of the DLL describes.
#pragma once

#include <string>

#include "com/registry_script.h"
#include "platform/win32.h"

namespace depot {

// Runs registry scripts with a set of replacements. Texts are UTF-8, so that the DLL can be
// registered from a folder of any name.
class CRegistrar {
public:
    // Has %name% stand for `value` in scripts.
    HRESULT AddReplacement(const std::string& name, const std::string& value) noexcept;

    // Creates the keys and values of the script resource. Returns the first failure.
    HRESULT Register(WORD scriptResource) const noexcept;

    // Removes the keys of the script resource with everything below them, except those that must
    // stay. What is not there counts as removed. Returns the first failure.
    HRESULT Unregister(WORD scriptResource) const noexcept;

private:
    RegistryScriptReplacements replacements_;
};

}  // namespace depot
