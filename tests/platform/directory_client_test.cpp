#include "platform/directory_client.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstring>

#include "platform/system_folder.h"
#include "support/results.h"
#include "support/scratch.h"

namespace depot {
namespace {

using test::Fails;
using test::IsCode;
using test::IsDone;

constexpr const char* kExpectedNames[] = {"ldap_initA",
                                          "cldap_openA",
                                          "ldap_openA",
                                          "ldap_startup",
                                          "ldap_cleanup",
                                          "ldap_sslinitA",
                                          "ldap_connect",
                                          "ldap_bindA",
                                          "ldap_bind_sA",
                                          "ldap_simple_bindA",
                                          "ldap_simple_bind_sA",
                                          "ldap_sasl_bindA",
                                          "ldap_sasl_bindA",
                                          "ldap_unbind",
                                          "ldap_unbind_s",
                                          "ldap_set_option",
                                          "ldap_get_option",
                                          "ldap_searchA",
                                          "ldap_search_sA",
                                          "ldap_search_stA",
                                          "ldap_search_extA",
                                          "ldap_modifyA",
                                          "ldap_modify_sA",
                                          "ldap_modify_extA",
                                          "ldap_modify_ext_sA",
                                          "ldap_addA",
                                          "ldap_add_sA",
                                          "ldap_add_extA",
                                          "ldap_add_ext_sA",
                                          "ldap_compareA",
                                          "ldap_compare_sA",
                                          "ldap_compare_extA",
                                          "ldap_compare_ext_sA",
                                          "ldap_rename_extA",
                                          "ldap_rename_ext_sA",
                                          "ldap_deleteA",
                                          "ldap_delete_sA",
                                          "ldap_delete_extA",
                                          "ldap_delete_ext_sA",
                                          "ldap_abandon",
                                          "ldap_result",
                                          "ldap_msgfree",
                                          "ldap_result2error",
                                          "ldap_err2stringA",
                                          "ldap_first_entry",
                                          "ldap_next_entry",
                                          "ldap_count_entries",
                                          "ldap_first_attributeA",
                                          "ldap_next_attributeA",
                                          "ldap_get_valuesA",
                                          "ldap_get_values_lenA",
                                          "ldap_count_valuesA",
                                          "ldap_value_freeA",
                                          "ldap_value_free_len",
                                          "ldap_check_filterA",
                                          "ldap_memfreeA",
                                          "ldap_get_dnA",
                                          "ldap_explode_dnA",
                                          "ldap_start_tls_sA",
                                          "ldap_stop_tls_s",
                                          "ldap_dn2ufnA",
                                          "ldap_ufn2dnA",
                                          "ber_bvfree",
                                          "ber_free",
                                          "ldap_modrdn2A",
                                          "ldap_modrdnA",
                                          "ldap_create_sort_controlA",
                                          "ldap_parse_sort_controlA",
                                          "ldap_encode_sort_controlA",
                                          "LdapGetLastError",
                                          "LdapMapErrorToWin32"};
constexpr std::size_t kCount = std::size(kExpectedNames);

// The table as the slots that it consists of, the library last.
std::vector<void*> Slots(const DirectoryClient& client) {
    static_assert(sizeof(DirectoryClient) == (kCount + 1) * sizeof(void*));
    std::vector<void*> slots(kCount + 1);
    std::memcpy(slots.data(), &client, sizeof(client));
    return slots;
}

TEST(DirectoryClientTest, NamesAreLookedUpInTheirOrder) {
    EXPECT_THAT(kDirectoryClientNames, testing::ElementsAreArray(kExpectedNames));
}

TEST(DirectoryClientTest, EachSlotHoldsTheEntryPointOfItsName) {
    DirectoryClient client;
    EXPECT_THAT(BindDirectoryClient(client), IsDone());
    const std::vector<void*> slots = Slots(client);
    for (std::size_t index = 0; index < kCount; ++index) {
        EXPECT_EQ(reinterpret_cast<void*>(GetProcAddress(client.library, kExpectedNames[index])),
                  slots[index])
            << kExpectedNames[index];
    }
    EXPECT_EQ(client.library, slots[kCount]);
}

TEST(DirectoryClientTest, DoubledNameFillsTwoSlotsWithOneEntryPoint) {
    DirectoryClient client;
    BindDirectoryClient(client);
    EXPECT_EQ(client.ldap_sasl_bind, client.ldap_sasl_bind_again);
    EXPECT_FALSE(IsMissing(client.ldap_sasl_bind));
}

TEST(DirectoryClientTest, LibraryComesFromTheSystemFolder) {
    EXPECT_EQ(SystemFolder() + "wldap32.dll", DirectoryClientPath());
    DirectoryClient client;
    BindDirectoryClient(client);
    char path[MAX_PATH] = {};
    GetModuleFileNameA(client.library, path, sizeof(path));
    EXPECT_STRCASEEQ(DirectoryClientPath().c_str(), path);
}

TEST(DirectoryClientTest, MissingLibraryLeavesNoSlotNull) {
    const test::ScratchFolder folder;
    DirectoryClient client;
    EXPECT_THAT(BindDirectoryClient(client, folder.At("wldap32.dll")), Fails());
    EXPECT_EQ(nullptr, client.library);
    std::vector<void*> slots = Slots(client);
    slots.pop_back();
    EXPECT_THAT(slots, testing::Each(testing::NotNull()));
    EXPECT_EQ(nullptr, client.ldap_init(nullptr, 389));
    EXPECT_THAT(client.LdapGetLastError(), IsCode(LDAP_SERVER_DOWN));
    EXPECT_THAT(client.ldap_bind_s(nullptr, nullptr, nullptr, 0), Fails(LDAP_SERVER_DOWN));
    EXPECT_THAT(client.ldap_simple_bind_s(nullptr, nullptr, nullptr), Fails(LDAP_SERVER_DOWN));
    EXPECT_THAT(client.ldap_set_option(nullptr, 0, nullptr), Fails(LDAP_SERVER_DOWN));
    EXPECT_THAT(client.ldap_unbind_s(nullptr), Fails(LDAP_SERVER_DOWN));
    EXPECT_EQ(nullptr, client.ldap_first_entry(nullptr, nullptr));
    EXPECT_EQ(0u, client.ldap_count_entries(nullptr, nullptr));
    EXPECT_EQ(0u, client.ldap_count_values(nullptr));
    EXPECT_EQ(DWORD{ERROR_BAD_NET_RESP}, client.LdapMapErrorToWin32(81));
}

TEST(DirectoryClientTest, LibraryWithoutTheEntryPointsBindsAllTheSame) {
    DirectoryClient client;
    EXPECT_THAT(BindDirectoryClient(client, SystemFolder() + "version.dll"), IsDone());
    EXPECT_NE(nullptr, client.library);
    EXPECT_TRUE(IsMissing(client.ldap_init));
    EXPECT_TRUE(IsMissing(client.ldap_search_s));
    EXPECT_THAT(client.ldap_delete_s(nullptr, nullptr), Fails(LDAP_SERVER_DOWN));
}

TEST(DirectoryClientTest, BindingAgainLoadsTheLibraryOnce) {
    DirectoryClient first;
    BindDirectoryClient(first);
    DirectoryClient second;
    BindDirectoryClient(second);
    EXPECT_EQ(first.library, second.library);
    EXPECT_EQ(Slots(first), Slots(second));
}

}  // namespace
}  // namespace depot
