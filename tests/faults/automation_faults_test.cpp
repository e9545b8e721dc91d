// What automation needs while system calls fail: the registration, and calls by name.
#include <gmock/gmock.h>

#include "component/late_calls.h"
#include "faults/fault_series.h"
#include "support/results.h"

namespace depot::test {
namespace {

using testing::AnyOf;

constexpr const char* kRegisteredKeys[] = {
    "AppID\\DepotIntr.DLL",
    "DepotIntr.DepotIntrApi\\CLSID",
    "DepotIntr.DepotIntrApi\\CurVer",
    "DepotIntr.DepotIntrApi.1\\CLSID",
};

bool IsRegistered(const char* path) {
    HKEY key = nullptr;
    if (RegOpenKeyExA(HKEY_CLASSES_ROOT, path, 0, KEY_READ, &key) != ERROR_SUCCESS) return false;
    RegCloseKey(key);
    return true;
}

class AutomationFaultsTest : public ComponentTest {
protected:
    const LCID locale_ = GetThreadLocale();
    LateClient late_{*api_};
    FaultLayer layer_{Library::Own().Module()};
};

TEST_F(AutomationFaultsTest, RegistrationIsCompleteOrFails) {
    HRESULT result = S_FALSE;
    RunWithFaults({
        .prepare = [] { EXPECT_THAT(Library::Own().Unregister(), IsOk()); },
        .operate = [&] { result = Library::Own().Register(); },
        .verify =
            [&](std::optional<Fault> failing) {
                EXPECT_EQ(locale_, GetThreadLocale());
                EXPECT_TRUE(result == S_OK || (failing && FAILED(result))) << std::hex << result;
                if (result != S_OK) return;
                for (const char* const key : kRegisteredKeys) EXPECT_TRUE(IsRegistered(key)) << key;
                EXPECT_NE(nullptr, test::CreateApi());
            },
    });
}

TEST_F(AutomationFaultsTest, UnregistrationLeavesNothingOrFails) {
    HRESULT result = S_FALSE;
    RunWithFaults({
        .prepare = [] { EXPECT_THAT(Library::Own().Register(), IsOk()); },
        .operate = [&] { result = Library::Own().Unregister(); },
        .verify =
            [&](std::optional<Fault> failing) {
                EXPECT_EQ(locale_, GetThreadLocale());
                EXPECT_TRUE(result == S_OK || (failing && FAILED(result))) << std::hex << result;
                if (result != S_OK) return;
                for (const char* const key : kRegisteredKeys)
                    EXPECT_FALSE(IsRegistered(key)) << key;
            },
    });
}

TEST_F(AutomationFaultsTest, ObjectIsMadeOrItsCreationFails) {
    HRESULT result = S_FALSE;
    bool made = false;
    RunWithFaults({
        .prepare = [&] { made = false; },
        .operate =
            [&] {
                void* created = nullptr;
                result =
                    Library::Own().GetClassObject(CLSID_DepotIntrApi, IID_IClassFactory, &created);
                const Com<IClassFactory> factory(static_cast<IClassFactory*>(created));
                if (!factory) return;
                created = nullptr;
                result = factory->CreateInstance(nullptr, IID_IDepotIntrApi, &created);
                made = Com<IUnknown>(static_cast<IUnknown*>(created)) != nullptr;
            },
        .verify =
            [&](std::optional<Fault> failing) {
                EXPECT_EQ(made, result == S_OK);
                EXPECT_TRUE(made || (failing && FAILED(result))) << std::hex << result;
            },
    });
}

TEST_F(AutomationFaultsTest, CallsByNameGiveTheValueOrFail) {
    DefineDepot("Work");
    folder_.MakeFile("Work\\office.kra", "[S]\r\nK=old\r\n");
    const DISPID load = late_.IdOf(L"DPLoadFile");
    const DISPID read = late_.IdOf(L"DPGetProfileString");
    const DISPID end = late_.IdOf(L"DPUnInitialize");
    std::wstring text;
    RunWithFaults({
        .prepare = [&] { text = L"-"; },
        .operate =
            [&] {
                Variant handle(0);
                Variant value(L"-");
                late_.Invoke(load, {Variant::Reference(handle), Variant(L"<Work>\\office.kra")},
                             {});
                late_.Invoke(read, {handle, L"S", L"K", L"-", Variant::Reference(value), 99}, {});
                FaultLayer::Stop();
                text = value.Text();
                EXPECT_THAT(late_.Invoke(end, {handle}, {}), IsOk());
            },
        .verify =
            [&](std::optional<Fault> failing) {
                EXPECT_THAT(text, AnyOf(L"old", L"-", L""));
                EXPECT_TRUE(failing || text == L"old");
            },
    });
}

}  // namespace
}  // namespace depot::test
