// Servers that go away and come back, as clients of the component see it.
#include <atomic>
#include <chrono>
#include <iostream>
#include <thread>
#include <vector>

#include "component/api2.h"
#include "support/box_log.h"
#include "support/component_depots.h"
#include "support/directory_fixture.h"
#include "support/relay.h"
#include "support/results.h"
#include "support/working_files.h"

namespace depot::test {
namespace {

constexpr char kFile[] = "<Corp>\\a.kra";

// Two servers that hold one depot. Nobody is asked anything: no dialog is registered.
class OutageWorld {
public:
    explicit OutageWorld(const ScratchKey& depots) {
        DefineDirectoryDepot(depots, "Corp", first.Port(), kSuffix);
        ForgetServer(second.Port());
        depots.Text("Corp", "Path2", kSuffix);
        depots.Dword("Corp", "Type2", kDirectoryLocation);
        depots.Text("Corp", "Host2", "127.0.0.1");
        depots.Dword("Corp", "Port2", second.Port());
        depots.Dword("Corp", "Authentication2", kSimpleAuthentication);
        depots.Text("Corp", "Username2", kEditor);
        depots.Text("Corp", "Password2", kEditorPassword);
        first.AddFile("a.kra", kSuffix, "[S]\r\nK=first\r\n");
        second.AddFile("a.kra", kSuffix, "[S]\r\nK=second\r\n");
    }

    DirectoryServer first, second;
    const BoxLog boxes;
    const CleanWorkingFiles clean;
};

// Runs it on a thread in an apartment of its own.
template <class Work>
void InApartment(DWORD kind, const Work& work) {
    std::thread([&] {
        const Apartment apartment(kind);
        const Com<IDepotIntrApi> api = test::CreateApi();
        ASSERT_TRUE(api);
        work(*api);
    }).join();
}

DWORD CodeOfLastError(IDepotIntrApi2& api2, const Session& session) {
    return static_cast<DWORD>(LastErrorOf(api2, session).code);
}

// What a client reads, empty where the file cannot be loaded.
std::wstring Load(IDepotIntrApi& api, Session& session) {
    if (api.DPLoadFile(session.Address(), Text(kFile)) != S_OK) return {};
    OutText value;
    EXPECT_THAT(api.DPGetProfileString(session, Text("S"), Text("K"), Text("(none)"), value, 100),
                IsOk());
    return value.Value();
}

class OutagesTest : public ComponentTest {
protected:
    OutageWorld world_{depots_};
};

class OutagesInApartmentsTest : public ComponentTest, public testing::WithParamInterface<DWORD> {
protected:
    OutageWorld world_{depots_};
};

TEST_P(OutagesInApartmentsTest, FirstServerThatIsDownAtTheStartIsReplacedByTheSecond) {
    world_.first.Stop();
    InApartment(GetParam(), [&](IDepotIntrApi& api) {
        Session session(api);
        EXPECT_EQ(L"second", Load(api, session));
        world_.first.Continue();
        // The session stays where it is; the next one begins anew.
        EXPECT_EQ(L"second", Load(api, session));
        Session next(api);
        EXPECT_EQ(L"first", Load(api, next));
    });
    EXPECT_THAT(world_.boxes.Boxes(), testing::IsEmpty());
}

TEST_P(OutagesInApartmentsTest, FirstServerThatGoesInTheMiddleFailsUntilItIsBack) {
    InApartment(GetParam(), [&](IDepotIntrApi& api) {
        Session session(api);
        EXPECT_EQ(L"first", Load(api, session));
        world_.first.Stop();
        EXPECT_EQ(L"(none)", Load(api, session));
        Session next(api);
        EXPECT_EQ(L"second", Load(api, next));
        world_.first.Continue();
        EXPECT_EQ(L"first", Load(api, session));
    });
}

TEST_P(OutagesInApartmentsTest, EditThatMeetsTheOutageIsStoredOnceTheServerIsBack) {
    InApartment(GetParam(), [&](IDepotIntrApi& api) {
        Session session(api);
        ASSERT_EQ(L"first", Load(api, session));
        world_.first.Stop();
        EXPECT_THAT(api.DPSetProfileString(session, Text("S"), Text("K"), Text("new")), IsOk());
        world_.first.Continue();
        EXPECT_THAT(api.DPFlushFile(session), IsOk());
        EXPECT_EQ(L"new", Load(api, session));
    });
    EXPECT_THAT(world_.boxes.Boxes(), testing::IsEmpty());
}

INSTANTIATE_TEST_SUITE_P(Apartments, OutagesInApartmentsTest,
                         testing::Values(COINIT_APARTMENTTHREADED, COINIT_MULTITHREADED),
                         [](const testing::TestParamInfo<DWORD>& kind) {
                             return kind.param == COINIT_MULTITHREADED ? "Multithreaded"
                                                                       : "Singlethreaded";
                         });

// A morning after an outage: every client is a thread with an apartment and a session.
TEST_F(OutagesTest, ManyClientsThatStartAtOnceAfterAnOutageAllWork) {
    constexpr int kClients = 200;
    world_.first.Stop();
    world_.first.Continue();
    std::atomic<int> working = 0;
    std::atomic<bool> isOpen = false;
    std::vector<std::thread> clients;
    for (int client = 0; client < kClients; ++client) {
        clients.emplace_back([&] {
            const Apartment apartment;
            const Com<IDepotIntrApi> api = test::CreateApi();
            while (!isOpen) Sleep(1);
            Session session(*api);
            if (Load(*api, session) == L"first") ++working;
        });
    }
    const auto start = std::chrono::steady_clock::now();
    isOpen = true;
    for (std::thread& client : clients) client.join();
    const auto taken = std::chrono::steady_clock::now() - start;
    std::cout << "the last of " << kClients << " clients worked after "
              << std::chrono::duration_cast<std::chrono::milliseconds>(taken).count() << " ms\n";
    EXPECT_EQ(kClients, working);
    EXPECT_THAT(world_.boxes.Boxes(), testing::IsEmpty());
}

TEST_F(OutagesTest, EditOfAFileThatNoServerHandedOutIsReportedAsUnreachableByEachMethod) {
    const Com<IDepotIntrApi2> api2 = Api2Of(*api_);
    Session session(*api_);
    OutBool answer;
    ASSERT_THAT(api2->Quiet(session, VARIANT_TRUE, answer), IsOk());
    world_.first.Stop();
    world_.second.Stop();
    EXPECT_THAT(api_->DPLoadFile(session.Address(), Text(kFile)), IsOk());
    EXPECT_EQ(ERROR_HOST_UNREACHABLE, CodeOfLastError(*api2, session));
    EXPECT_THAT(api_->DPSetProfileString(session, Text("S"), Text("K"), Text("mine")), IsOk());
    EXPECT_EQ(ERROR_HOST_UNREACHABLE, CodeOfLastError(*api2, session));
    world_.first.Continue();
    EXPECT_THAT(api_->DPFlushFile(session), IsOk());
    EXPECT_EQ(ERROR_HOST_UNREACHABLE, CodeOfLastError(*api2, session));
    EXPECT_THAT(api_->DPLoadFile(session.Address(), Text(kFile)), IsOk());
    EXPECT_EQ(ERROR_SUCCESS, CodeOfLastError(*api2, session));
    EXPECT_EQ(L"first", Load(*api_, session));
    EXPECT_THAT(world_.boxes.Boxes(), testing::IsEmpty());
}

TEST_F(OutagesTest, FlushWhoseReloadIsCutGoesOnWithWhatItStored) {
    DirectoryServer server;
    Relay relay(server.Port());
    DefineDirectoryDepot(depots_, "Cut", relay.Port(), kSuffix);
    const Com<IDepotIntrApi2> api2 = Api2Of(*api_);
    for (int request = 1; request <= 5; ++request) {
        SCOPED_TRACE(request);
        const std::string name = "a" + std::to_string(request) + ".kra";
        server.AddFile(name, kSuffix, "[S]\r\nK=first\r\nL=stays\r\n");
        Session session(*api_);
        OutBool answer;
        OutText value, text;
        ASSERT_THAT(api2->Quiet(session, VARIANT_TRUE, answer), IsOk());
        ASSERT_THAT(api_->DPLoadFile(session.Address(), Text("<Cut>\\" + name)), IsOk());
        api_->DPSetProfileString(session, Text("S"), Text("K"), Text("mine"));
        relay.Disturb({.dropBeforeRequest = request});
        EXPECT_THAT(api_->DPFlushFile(session), IsOk());
        relay.Disturb({});
        const bool isReported = CodeOfLastError(*api2, session) != ERROR_SUCCESS;
        EXPECT_THAT(api2->ReadText(session, Bstr(Wide("<Cut>\\" + name)), text), IsOk());
        if (text.Value().find(L"mine") == std::wstring::npos) {
            EXPECT_TRUE(isReported);
            continue;
        }
        EXPECT_FALSE(isReported);
        api_->DPGetProfileString(session, Text("S"), Text("L"), Text("-"), value, 100);
        EXPECT_EQ(L"stays", value.Value());
        api_->DPSetProfileString(session, Text("S"), Text("M"), Text("later"));
        EXPECT_THAT(api_->DPFlushFile(session), IsOk());
        EXPECT_THAT(api2->ReadText(session, Bstr(Wide("<Cut>\\" + name)), text), IsOk());
        EXPECT_EQ(L"[S]\r\nK=mine\r\nL=stays\r\nM=later\r\n", text.Value());
    }
}

TEST_F(OutagesTest, WholeTextStaysWhileNoServerAnswersAndNoBoxIsShown) {
    const Com<IDepotIntrApi2> api2 = Api2Of(*api_);
    Session session(*api_);
    OutBool answer;
    ASSERT_THAT(api2->Quiet(session, VARIANT_TRUE, answer), IsOk());
    ASSERT_THAT(api2->WriteText(session, Bstr(L"<Corp>\\b.txt"), Bstr(L"old"), TEXT_ANSI, answer),
                IsOk());
    world_.first.Stop();
    world_.second.Stop();
    EXPECT_THAT(api2->WriteText(session, Bstr(L"<Corp>\\b.txt"), Bstr(L"new"), TEXT_ANSI, answer),
                IsRefused());
    EXPECT_TRUE(answer.IsFalse());
    EXPECT_NE(0, LastErrorOf(*api2, session).code);
    EXPECT_NE(L"", LastErrorOf(*api2, session).text);
    VARIANT none = {};
    EXPECT_THAT(api2->Move(session, Bstr(L"<Corp>\\b.txt"), Bstr(folder_.At("b.txt")),
                           VARIANT_FALSE, none, answer),
                IsRefused());
    EXPECT_TRUE(answer.IsFalse());
    EXPECT_FALSE(Exists(folder_.At("b.txt")));
    world_.first.Continue();
    OutText text;
    EXPECT_THAT(api2->ReadText(session, Bstr(L"<Corp>\\b.txt"), text), IsOk());
    EXPECT_EQ(L"old", text.Value());
    EXPECT_THAT(world_.boxes.Boxes(), testing::IsEmpty());
}

}  // namespace
}  // namespace depot::test
