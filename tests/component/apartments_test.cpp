// Several apartments at once, and clients whose calls are marshalled.
#include <mutex>
#include <set>
#include <thread>
#include <vector>

#include "component/api2.h"
#include "component/progress_object.h"
#include "support/results.h"

namespace depot::test {
namespace {

class ApartmentsTest : public ComponentTest {
protected:
    ApartmentsTest() {
        DefineDepot("A", "Depot A");
        folder_.MakeFile("A\\a.kra", "[S]\r\nK=1\r\n");
    }
};

// One client with an apartment of its own, which keeps its handles for itself.
void OpenAndEndSessions(int rounds, std::set<LONG_PTR>& live, std::mutex& lock) {
    const Apartment apartment;
    const Com<IDepotIntrApi> api = CreateApi();
    for (int round = 0; round < rounds; ++round) {
        LONG_PTR handle = kJunkHandle;
        EXPECT_THAT(api->DPInitialize(&handle), IsOk());
        {
            const std::lock_guard guard(lock);
            EXPECT_TRUE(live.insert(handle).second) << "one handle was given to two clients";
        }
        EXPECT_THAT(api->DPLoadFile(&handle, Text("<A>\\a.kra")), IsOk());
        ULONG value = 0;
        EXPECT_THAT(api->DPGetProfileInt(handle, Text("S"), Text("K"), 5, &value), IsOk());
        EXPECT_EQ(1u, value);
        {
            const std::lock_guard guard(lock);
            live.erase(handle);
        }
        EXPECT_THAT(api->DPUnInitialize(handle), IsOk());
    }
}

TEST_F(ApartmentsTest, SeveralApartmentsOpenSessionsAtOnce) {
    std::set<LONG_PTR> live;
    std::mutex lock;
    std::vector<std::thread> clients;
    for (int client = 0; client < 6; ++client) {
        clients.emplace_back([&] { OpenAndEndSessions(40, live, lock); });
    }
    for (std::thread& client : clients) client.join();
    EXPECT_TRUE(live.empty());
}

TEST_F(ApartmentsTest, FirstLateBoundCallsOfSeveralApartmentsAgree) {
    std::vector<std::thread> clients;
    for (int client = 0; client < 6; ++client) {
        clients.emplace_back([] {
            const Apartment apartment;
            const Com<IDepotIntrApi> api = CreateApi();
            DISPPARAMS none = {};
            VARIANT handle = {};
            EXPECT_THAT(api->Invoke(1, IID_NULL, LOCALE_USER_DEFAULT, DISPATCH_METHOD, &none,
                                    &handle, nullptr, nullptr),
                        IsOk());
            EXPECT_EQ(VT_I4, V_VT(&handle));
            EXPECT_THAT(api->DPUnInitialize(V_I4(&handle)), IsOk());
        });
    }
    for (std::thread& client : clients) client.join();
}

// The client lives in the multithreaded apartment, so that every call is marshalled to another
// thread with 32-bit handles.
using MarshalledClientTest = ApartmentsTest;

template <class Body>
void RunMarshalled(const Body& body) {
    std::thread client([&] {
        const Apartment apartment(COINIT_MULTITHREADED);
        const Com<IDepotIntrApi> api = CreateApi();
        if (api) body(*api);
    });
    client.join();
}

TEST_F(MarshalledClientTest, SessionWorksFromBeginningToEnd) {
    RunMarshalled([](IDepotIntrApi& api) {
        LONG_PTR handle = 0;
        ASSERT_THAT(api.DPInitialize(&handle), IsOk());
        EXPECT_GT(handle, 0);
        ASSERT_THAT(api.DPLoadFile(&handle, Text("<A>\\a.kra")), IsOk());
        OutText value;
        BSTR* const output = value;
        *output = nullptr;  // the marshaller may read it
        EXPECT_THAT(api.DPGetProfileString(handle, Text("S"), Text("K"), Text("D"), output, 100),
                    IsOk());
        EXPECT_EQ(L"1", value.Value());
        EXPECT_THAT(api.DPUnInitialize(handle), IsOk());
        EXPECT_THAT(api.DPFlushFile(handle), IsRefused());
    });
}

TEST_F(MarshalledClientTest, LoadingWithHandleZeroMakesASession) {
    RunMarshalled([](IDepotIntrApi& api) {
        for (int count = 0; count < 10; ++count) {
            LONG_PTR handle = 0;
            ASSERT_THAT(api.DPLoadFile(&handle, Text("<A>\\a.kra")), IsOk());
            EXPECT_GT(handle, 0);
            EXPECT_THAT(api.DPFlushFile(handle), IsOk());
            EXPECT_THAT(api.DPUnInitialize(handle), IsOk());
        }
    });
}

TEST_F(MarshalledClientTest, EndedHandleIsRefused) {
    RunMarshalled([](IDepotIntrApi& api) {
        LONG_PTR handle = 0;
        ASSERT_THAT(api.DPInitialize(&handle), IsOk());
        ASSERT_THAT(api.DPUnInitialize(handle), IsOk());
        EXPECT_THAT(api.DPSetSelItemPath(handle, Text("x")), IsRefused());
        LONG_PTR again = handle;
        EXPECT_THAT(api.DPLoadFile(&again, Text("<A>\\a.kra")), IsRefused());
    });
}

TEST_F(MarshalledClientTest, SecondInterfaceWorksFromBeginningToEnd) {
    RunMarshalled([](IDepotIntrApi& api) {
        const Com<IDepotIntrApi2> api2 = Api2Of(api);
        ASSERT_TRUE(api2);
        LONG_PTR handle = 0;
        ASSERT_THAT(api2->DPInitialize(&handle), IsOk());
        OutBool answer;
        EXPECT_THAT(api2->Exists(handle, Bstr(L"<A>\\a.kra"), answer), IsOk());
        EXPECT_TRUE(answer.IsTrue());
        BSTR text = nullptr;
        EXPECT_THAT(api2->ReadText(handle, Bstr(L"<A>\\a.kra"), &text), IsOk());
        EXPECT_EQ(L"[S]\r\nK=1\r\n", std::wstring(text, SysStringLen(text)));
        SysFreeString(text);
        VARIANT paths = {};
        EXPECT_THAT(api2->Find(handle, Bstr(L"<A>"), nullptr, FIND_FILES, &paths), IsOk());
        EXPECT_THAT(TextsOf(paths), testing::ElementsAre(L"<A>\\a.kra"));
        ProgressObject progress;
        EXPECT_THAT(api2->Copy(handle, Bstr(L"<A>\\a.kra"), Bstr(L"<A>\\b.kra"), VARIANT_FALSE,
                               progress.AsVariant(), answer),
                    IsOk());
        EXPECT_EQ(1u, progress.calls.size());
        IDepotInfos* list = nullptr;
        EXPECT_THAT(api2->Depots(handle, &list), IsOk());
        const Com<IDepotInfos> depots(list);
        LONG count = 0;
        EXPECT_THAT(depots->get_Count(&count), IsOk());
        EXPECT_EQ(1, count);
        EXPECT_THAT(api2->ReadText(handle, Bstr(L"<A>\\none.kra"), &text), IsRefused());
        LONG code = 0;
        EXPECT_THAT(api2->LastErrorCode(handle, &code), IsOk());
        EXPECT_EQ(ERROR_FILE_NOT_FOUND, static_cast<DWORD>(code));
        EXPECT_THAT(api2->DPUnInitialize(handle), IsOk());
    });
}

}  // namespace
}  // namespace depot::test
