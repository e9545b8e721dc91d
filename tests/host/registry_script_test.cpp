#include "host/registry_script.h"

#include <gtest/gtest.h>

namespace depot {
namespace {

TEST(RegistryScriptTest, InsertedTextIsNotParsedAgain) {
    const auto roots =
        ParseRegistryScript("HKCR { Key = s '%MODULE%' }", {{"MODULE", "C:\\it's %X% {\\a.dll"}});
    ASSERT_TRUE(roots.has_value());
    EXPECT_EQ("C:\\it's %X% {\\a.dll",
              std::get<std::string>(*roots->at(0).keys.at(0).defaultValue));
}

}  // namespace
}  // namespace depot
