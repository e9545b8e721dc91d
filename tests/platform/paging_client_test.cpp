#include "platform/paging_client.h"

#include <gtest/gtest.h>

namespace depot {
namespace {

HMODULE ClientLibrary() {
    DirectoryClient client;
    EXPECT_EQ(1, BindDirectoryClient(client));
    return client.library;
}

TEST(PagingClientTest, TheSystemsLibraryHasEveryEntryPoint) {
    const PagingClient paging(ClientLibrary());
    EXPECT_TRUE(paging.IsComplete());
}

TEST(PagingClientTest, WithoutALibraryEveryEntryPointFails) {
    for (const PagingClient& paging :
         {PagingClient(), PagingClient(nullptr), PagingClient(GetModuleHandleA("kernel32.dll"))}) {
        EXPECT_FALSE(paging.IsComplete());
        EXPECT_EQ(ULONG{LDAP_SERVER_DOWN},
                  paging.ldap_create_page_control(nullptr, 1, nullptr, 0, nullptr));
        EXPECT_EQ(ULONG{LDAP_SERVER_DOWN}, paging.ldap_control_free(nullptr));
    }
}

TEST(PagingClientTest, OneMissingEntryPointMakesTheTableIncomplete) {
    PagingClient paging(ClientLibrary());
    paging.ldap_controls_free = PagingClient().ldap_controls_free;
    EXPECT_FALSE(paging.IsComplete());
}

}  // namespace
}  // namespace depot
