#include "platform/own_objects.h"

#include <gtest/gtest.h>

#include "platform/directory_info_block.h"
#include "platform/local_file.h"
#include "platform/macro_cache.h"
#include "platform/trace.h"
#include "support/import_patch.h"
#include "support/others_object.h"
#include "support/results.h"
#include "support/scratch.h"

namespace depot::test {
namespace {

constexpr char kName[] = "DepotTests - Own object";
constexpr std::uint32_t kSize = 64;

UniqueHandle CreateOwn() {
    OwnObjectRights rights;
    return UniqueHandle(CreateEventA(rights.Get(), FALSE, FALSE, kName));
}

// Whether an object that somebody made with these rights is believed by a second opener.
bool IsBelieved(const std::string& rights) {
    const UniqueHandle made = OthersEvent(kName, rights);
    EXPECT_NE(nullptr, made) << rights;
    const UniqueHandle opened = CreateOwn();
    EXPECT_NE(nullptr, opened) << rights;
    return IsTrustedObject(opened.get(), kName);
}

std::string RightsOf(HANDLE object) {
    constexpr SECURITY_INFORMATION kParts = OWNER_SECURITY_INFORMATION | DACL_SECURITY_INFORMATION;
    alignas(void*) BYTE bytes[512] = {};
    DWORD size = sizeof(bytes);
    char* text = nullptr;
    EXPECT_TRUE(GetKernelObjectSecurity(object, kParts, bytes, size, &size));
    ConvertSecurityDescriptorToStringSecurityDescriptorA(bytes, SDDL_REVISION_1, kParts, &text,
                                                         nullptr);
    const std::unique_ptr<void, LocalFreer> freer(text);
    return text != nullptr ? text : "";
}

TEST(OwnObjectsTest, NewObjectIsForThisUserAndTheSystemAlone) {
    const UniqueHandle object = CreateOwn();
    const std::string owner = OfThisUser("");
    const std::string user = owner.substr(2);
    const std::string rights = RightsOf(object.get());
    EXPECT_EQ(0U, rights.find(owner)) << rights;
    EXPECT_NE(std::string::npos, rights.find(";;;" + user + ")")) << rights;
    EXPECT_NE(std::string::npos, rights.find(";;;SY)")) << rights;
    EXPECT_EQ(2, std::count(rights.begin(), rights.end(), '(')) << rights;
}

TEST(OwnObjectsTest, NewObjectIsBelievedByTheNextOpener) {
    const UniqueHandle object = CreateOwn();
    EXPECT_TRUE(IsTrustedObject(CreateOwn().get(), kName));
}

// The program runs as an administrator, at the high level.
TEST(OwnObjectsTest, OwnerAndLevelDecide) {
    EXPECT_TRUE(IsBelieved(OfThisUser("D:(A;;GA;;;WD)S:(ML;;NW;;;HI)")));
    EXPECT_TRUE(IsBelieved(kOfTheSystem));
    EXPECT_TRUE(IsBelieved(kOfAdministrators));
    EXPECT_FALSE(IsBelieved(kOfSomebodyElse));
    EXPECT_FALSE(IsBelieved(std::string(kOfSomebodyElse) + "S:(ML;;NW;;;SI)"));
    EXPECT_FALSE(IsBelieved(OfThisUser()));
    EXPECT_FALSE(IsBelieved(OfThisUser("D:(A;;GA;;;WD)S:(ML;;NW;;;LW)")));
    EXPECT_FALSE(IsBelieved(std::string(kOfTheSystem) + "S:(ML;;NW;;;ME)"));
}

// As programs make them that know nothing of rights.
TEST(OwnObjectsTest, ObjectMadeWithTheRightsOfTheSystemsChoiceIsBelieved) {
    const UniqueHandle made(CreateEventA(nullptr, FALSE, FALSE, kName));
    EXPECT_TRUE(IsTrustedObject(CreateOwn().get(), kName));
}

TEST(OwnObjectsTest, ObjectWhoseOwnerCannotBeReadIsNotBelieved) {
    EXPECT_FALSE(IsTrustedObject(nullptr, kName));
}

TEST(OwnObjectsTest, BlockOfSomebodyElseIsNeitherReadNorWritten) {
    const OthersBlock planted(kName, kOfSomebodyElse, std::string(kSize, 'p'));
    SharedBlockLink link;
    EXPECT_THAT(OpenSharedBlock(kName, kSize, link.handle, link.view), Fails());
    EXPECT_EQ(nullptr, link.handle);
    EXPECT_EQ(nullptr, link.view);
}

TEST(OwnObjectsTest, BlockThatMayNotBeOpenedCannotBeHad) {
    const OthersBlock planted(kName, kForNobodyHere, std::string(kSize, 'p'));
    SharedBlockLink link;
    EXPECT_THAT(OpenSharedBlock(kName, kSize, link.handle, link.view), Fails());
    EXPECT_EQ(nullptr, link.view);
}

TEST(OwnObjectsTest, BlockOfReservedPagesIsNotTouched) {
    OwnObjectRights rights;
    const UniqueHandle reserved(CreateFileMappingA(INVALID_HANDLE_VALUE, rights.Get(),
                                                   PAGE_READWRITE | SEC_RESERVE, 0, kSize, kName));
    SharedBlockLink link;
    EXPECT_THAT(OpenSharedBlock(kName, kSize, link.handle, link.view), Fails());
    EXPECT_EQ(nullptr, link.view);
}

TEST(OwnObjectsTest, TraceSaysWhyABlockIsNotUsed) {
    const ScratchFolder folder;
    const std::string path = folder.At("trace.txt");
    SetEnvironmentVariableA(kTraceVariable, path.c_str());
    StartTrace();
    {
        const OthersBlock planted(kName, kOfSomebodyElse, std::string(kSize, 'p'));
        SharedBlockLink link;
        OpenSharedBlock(kName, kSize, link.handle, link.view);
    }
    StopTrace();
    SetEnvironmentVariableA(kTraceVariable, nullptr);
    const auto bytes = ReadLocalFile(path);
    ASSERT_TRUE(bytes);
    const std::string written(bytes->begin(), bytes->end());
    EXPECT_NE(std::string::npos, written.find(" shared object \"" + std::string(kName) + "\" "));
    EXPECT_NE(std::string::npos, written.find("not used: it belongs to another user"));
}

TEST(OwnObjectsTest, UnknownUserMakesObjectsAsTheSystemDoesAndBelievesNone) {
    using ReadToken = decltype(&GetTokenInformation);
    const auto refuse = [](HANDLE, TOKEN_INFORMATION_CLASS, void*, DWORD, DWORD*) -> BOOL WINAPI {
        SetLastError(ERROR_ACCESS_DENIED);
        return FALSE;
    };
    const UniqueHandle made = OthersEvent(kName, kOfTheSystem);
    ASSERT_TRUE(ImpersonateSelf(SecurityImpersonation));
    {
        const ImportPatch<ReadToken> reading("GetTokenInformation", +refuse);
        ASSERT_TRUE(reading.IsInPlace());
        OwnObjectRights rights;
        EXPECT_EQ(nullptr, rights.Get());
        EXPECT_FALSE(IsTrustedObject(made.get(), kName));
    }
    EXPECT_TRUE(RevertToSelf());
    EXPECT_TRUE(IsTrustedObject(made.get(), kName));
}

TEST(OwnObjectsTest, MacroValuesOfSomebodyElseAreNotBelieved) {
    MacroValues planted = {};
    FillSlot(planted.profileFolder, "\\\\attacker\\profiles");
    FillSlot(planted.applicationFolder, "\\\\attacker\\app");
    const OthersBlock block(kName, kOfSomebodyElse,
                            std::string(reinterpret_cast<const char*>(&planted), sizeof(planted)));
    MacroCacheHolder holder(1, kName);
    EXPECT_EQ("", SlotText(holder.Copy().profileFolder));
    EXPECT_EQ("", SlotText(holder.Copy().applicationFolder));
    holder.Change([](MacroValues& values) { FillSlot(values.userFolder, "C:\\Users\\a"); });
    EXPECT_EQ("C:\\Users\\a", SlotText(holder.Copy().userFolder));
    // Nothing was told to whoever made the block either.
    EXPECT_EQ(std::string(reinterpret_cast<const char*>(&planted), sizeof(planted)),
              block.Contents(sizeof(planted)));
}

TEST(OwnObjectsTest, ServerBlockOfSomebodyElseIsNotBelieved) {
    const OthersBlock planted("Quillon - Depot - LDAP Info - planted", kOfSomebodyElse,
                              std::string(sizeof(DirectoryInfo), 'p'));
    DirectoryInfoBlock block("planted");
    EXPECT_EQ(nullptr, block.Access());
}

}  // namespace
}  // namespace depot::test
