#include "platform/paging_client.h"

#include <gtest/gtest.h>

#include "platform/traced_client.h"
#include "support/results.h"

namespace depot {
namespace {

using test::IsDone;

HMODULE ClientLibrary() {
    DirectoryClient client;
    EXPECT_THAT(BindDirectoryClient(client), IsDone());
    return client.library;
}

TEST(PagingClientTest, SystemsLibraryHasEveryEntryPoint) {
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

TEST(PagingClientTest, TracingPutsItselfBeforeSearchesAndLeavesMissingEntryPointsAlone) {
    PagingClient paging(ClientLibrary());
    const auto genuine = paging.ldap_search_ext_s;
    TraceRequests(paging);
    EXPECT_NE(genuine, paging.ldap_search_ext_s);
    const auto traced = paging.ldap_search_ext_s;
    TraceRequests(paging);
    EXPECT_EQ(traced, paging.ldap_search_ext_s) << "one function in front is enough";
    PagingClient missing;
    TraceRequests(missing);
    EXPECT_TRUE(IsMissing(missing.ldap_search_ext_s));
    EXPECT_FALSE(missing.IsComplete());
}

}  // namespace
}  // namespace depot
