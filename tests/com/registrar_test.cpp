#include "com/registrar.h"

#include <gtest/gtest.h>

#include "platform/registry_key.h"
#include "support/results.h"
#include "support/scratch.h"

namespace depot {
namespace {

using test::Fails;
using test::IsOk;

constexpr char kKey[] = "Software\\DepotTests\\Registrar";

// The scripts are resources of this program.
constexpr WORD kScript = 200;
constexpr WORD kBrokenScript = 201;
constexpr WORD kForeignRootScript = 202;
constexpr WORD kMissingScript = 299;

class RegistrarTest : public testing::Test {
protected:
    RegistrarTest() { EXPECT_THAT(registrar_.AddReplacement("NAME", "it's {here} %"), IsOk()); }

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
    ASSERT_THAT(registrar_.Register(kScript), IsOk());
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
    ASSERT_THAT(registrar_.Register(kScript), IsOk());
    EXPECT_FALSE(Open("Fresh\\Old").has_value());
    EXPECT_EQ("new", Text("Fresh", ""));
    EXPECT_TRUE(Open("Plain\\Old").has_value());
}

TEST_F(RegistrarTest, UnregisteringKeepsKeysThatMustStay) {
    ASSERT_THAT(registrar_.Register(kScript), IsOk());
    scratch_.Text("Kept\\Foreign", "", "x");
    ASSERT_THAT(registrar_.Unregister(kScript), IsOk());
    EXPECT_FALSE(Open("Plain").has_value());
    EXPECT_FALSE(Open("Fresh").has_value());
    EXPECT_FALSE(Open("Kept\\Inner").has_value());
    EXPECT_TRUE(Open("Kept\\Foreign").has_value());
}

TEST_F(RegistrarTest, UnregisteringWhatIsNotThereSucceeds) {
    EXPECT_THAT(registrar_.Unregister(kScript), IsOk());
    EXPECT_FALSE(Open().has_value());
}

TEST_F(RegistrarTest, MissingReplacementWritesNothing) {
    EXPECT_THAT(CRegistrar().Register(kScript), Fails(HRESULT_FROM_WIN32(ERROR_INVALID_DATA)));
    EXPECT_FALSE(Open().has_value());
}

TEST_F(RegistrarTest, ScriptThatCannotBeRunIsReported) {
    EXPECT_THAT(registrar_.Register(kMissingScript),
                Fails(HRESULT_FROM_WIN32(ERROR_RESOURCE_NAME_NOT_FOUND)));
    EXPECT_THAT(registrar_.Register(kBrokenScript), Fails(HRESULT_FROM_WIN32(ERROR_INVALID_DATA)));
    EXPECT_THAT(registrar_.Register(kForeignRootScript),
                Fails(HRESULT_FROM_WIN32(ERROR_INVALID_DATA)));
    EXPECT_THAT(registrar_.Unregister(kForeignRootScript),
                Fails(HRESULT_FROM_WIN32(ERROR_INVALID_DATA)));
}

TEST_F(RegistrarTest, KeyThatCannotBeWrittenIsReported) {
    HKEY key = nullptr;
    ASSERT_EQ(ERROR_SUCCESS,
              RegCreateKeyExA(HKEY_CURRENT_USER, kKey, 0, nullptr, REG_OPTION_VOLATILE,
                              KEY_ALL_ACCESS, nullptr, &key, nullptr));
    const UniqueHkey owned(key);
    EXPECT_THAT(registrar_.Register(kScript),
                Fails(HRESULT_FROM_WIN32(ERROR_CHILD_MUST_BE_VOLATILE)));
}

}  // namespace
}  // namespace depot
