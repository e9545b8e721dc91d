#include "com/registry_script.h"

#include "fuzz/fuzz_input.h"

namespace {

// As deep as a script may nest.
constexpr int kDeepest = 32;

int DepthOf(const depot::RegistryScriptKey& key) {
    int deepest = 0;
    for (const depot::RegistryScriptKey& child : key.keys) {
        deepest = std::max(deepest, DepthOf(child));
    }
    return deepest + 1;
}

}  // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string script = depot::test::FuzzInput(data, size).Rest();
    const depot::RegistryScriptReplacements replacements = {
        {"APPID", "{1}"}, {"MODULE", "C:\\it's\\%APPID%\\a.dll"}, {"", "empty"}};
    const auto keys = depot::ParseRegistryScript(script, replacements);
    if (!keys) return 0;
    for (const depot::RegistryScriptKey& key : *keys) {
        depot::test::Require(DepthOf(key) <= kDeepest + 1);
    }
    return 0;
}
