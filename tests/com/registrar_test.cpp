#include "com/registrar.h"

#include <gtest/gtest.h>

#include "platform/registry_key.h"
#include "support/scratch.h"

namespace depot {
namespace {

constexpr char kKey[] = "Software\\DepotTests\\Registrar";

// The scripts are resources of this program.
constexpr WORD kScript = 200;
constexpr WORD kBrokenScript = 201;
constexpr WORD kForeignRootScript = 202;
constexpr WORD kMissingScript = 299;

class RegistrarTest : public testing::Test {
protected:
    RegistrarTest() { EXPECT_EQ(S_OK, registrar_.AddReplacement("NAME", "it's {here} %")); }

    static std::optional<RegistryKey> Open(const std::string& below = {}) {
        return RegistryKey::Open(HKEY_CURRENT_USER, below.empty() ? kKey : kKey + ("\\" + below));
    }
    static std::string Text(const std::string& below, const std::string& name) {
        const auto key = Open(below);
        const auto text = key ? key->ReadString(name) : std::nullopt;
        return text.value_or("(missing)");
    }

    test::ScratchKey scratch_{HKEY_CURRENT_USER, kKey};
    CRegistrar registrar_;
};

TEST_F(RegistrarTest, RegisteringWritesKeysAndValues) {
    ASSERT_EQ(S_OK, registrar_.Register(kScript));
    EXPECT_EQ("text", Text("Plain", ""));
    EXPECT_EQ("it's {here} %", Text("Plain", "Named"));
    EXPECT_EQ(4294967295u, Open("Plain")->ReadDword("Number"));
    EXPECT_TRUE(Open("Plain\\Sub").has_value());
    EXPECT_EQ("(missing)", Text("Plain\\Sub", ""));
    EXPECT_EQ("x", Text("Kept\\Inner", ""));
}

TEST_F(RegistrarTest, ForceRemoveEmptiesTheKeyFirst) {
    scratch_.Text("Fresh\\Old", "", "old");
    scratch_.Text("Plain\\Old", "", "old");
    ASSERT_EQ(S_OK, registrar_.Register(kScript));
    EXPECT_FALSE(Open("Fresh\\Old").has_value());
    EXPECT_EQ("new", Text("Fresh", ""));
    EXPECT_TRUE(Open("Plain\\Old").has_value());
}

TEST_F(RegistrarTest, UnregisteringKeepsKeysThatMustStay) {
    ASSERT_EQ(S_OK, registrar_.Register(kScript));
    scratch_.Text("Kept\\Foreign", "", "x");
    ASSERT_EQ(S_OK, registrar_.Unregister(kScript));
    EXPECT_FALSE(Open("Plain").has_value());
    EXPECT_FALSE(Open("Fresh").has_value());
    EXPECT_FALSE(Open("Kept\\Inner").has_value());
    EXPECT_TRUE(Open("Kept\\Foreign").has_value());
}

TEST_F(RegistrarTest, UnregisteringWhatIsNotThereSucceeds) {
    EXPECT_EQ(S_OK, registrar_.Unregister(kScript));
    EXPECT_FALSE(Open().has_value());
}

TEST_F(RegistrarTest, MissingReplacementWritesNothing) {
    EXPECT_EQ(HRESULT_FROM_WIN32(ERROR_INVALID_DATA), CRegistrar().Register(kScript));
    EXPECT_FALSE(Open().has_value());
}

TEST_F(RegistrarTest, ScriptThatCannotBeRunIsReported) {
    EXPECT_EQ(HRESULT_FROM_WIN32(ERROR_RESOURCE_NAME_NOT_FOUND),
              registrar_.Register(kMissingScript));
    EXPECT_EQ(HRESULT_FROM_WIN32(ERROR_INVALID_DATA), registrar_.Register(kBrokenScript));
    EXPECT_EQ(HRESULT_FROM_WIN32(ERROR_INVALID_DATA), registrar_.Register(kForeignRootScript));
    EXPECT_EQ(HRESULT_FROM_WIN32(ERROR_INVALID_DATA), registrar_.Unregister(kForeignRootScript));
}

TEST_F(RegistrarTest, KeyThatCannotBeWrittenIsReported) {
    HKEY key = nullptr;
    ASSERT_EQ(ERROR_SUCCESS,
              RegCreateKeyExA(HKEY_CURRENT_USER, kKey, 0, nullptr, REG_OPTION_VOLATILE,
                              KEY_ALL_ACCESS, nullptr, &key, nullptr));
    const UniqueHkey owned(key);
    EXPECT_EQ(HRESULT_FROM_WIN32(ERROR_CHILD_MUST_BE_VOLATILE), registrar_.Register(kScript));
}

}  // namespace
}  // namespace depot
