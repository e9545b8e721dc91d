#include "com/com_module.h"

#include <gmock/gmock.h>

#include <set>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "com/registrar.h"
#include "support/import_patch.h"
#include "support/results.h"

namespace depot {
namespace {

using test::Fails;
using test::IsOk;
using testing::ElementsAre;

// What went with a module, in its order.
std::vector<std::string> endings;
const CComModule* moduleAtTheEnd = nullptr;

HRESULT MakeNothing(REFIID, void**) {
    return E_FAIL;
}

HRESULT MakeNoAggregate(IUnknown*, void**) {
    return E_FAIL;
}

const ObjectMapEntry kTerminatedClass[] = {
    {IID_IUnknown, 0, MakeNothing, MakeNoAggregate, [] { endings.push_back("first class"); }},
    {IID_IDispatch, 0, MakeNothing, MakeNoAggregate, nullptr},
    {IID_IClassFactory, 0, MakeNothing, MakeNoAggregate,
     [] {
         endings.push_back("last class");
         moduleAtTheEnd = &Module();
     }},
};
const ModuleIdentity kIdentity = {"{00000000-0000-0000-0000-000000000000}", IID_IUnknown,
                                  kTerminatedClass};

// Notes the locale in which registration runs its scripts.
class LocaleNotingModule final : public CComModule {
public:
    LocaleNotingModule() : CComModule(kIdentity) {}
    HRESULT AddCommonRGSReplacements(CRegistrar& registrar) noexcept override {
        seen = GetThreadLocale();
        return CComModule::AddCommonRGSReplacements(registrar);
    }
    LCID seen = 0;
};

// A table of the test's own in place of the system's, and how it is asked for.
class NotedInterfaceTable final : public IGlobalInterfaceTable {
public:
    NotedInterfaceTable() { current_ = this; }

    STDMETHODIMP QueryInterface(REFIID, void** object) override {
        *object = nullptr;
        return E_NOINTERFACE;
    }
    STDMETHODIMP_(ULONG) AddRef() override { return ++references; }
    STDMETHODIMP_(ULONG) Release() override {
        if (--references == 0) endings.push_back("interface table");
        return references;
    }
    STDMETHODIMP RegisterInterfaceInGlobal(IUnknown*, REFIID, DWORD*) override { return E_NOTIMPL; }
    STDMETHODIMP RevokeInterfaceFromGlobal(DWORD) override { return E_NOTIMPL; }
    STDMETHODIMP GetInterfaceFromGlobal(DWORD, REFIID, void**) override { return E_NOTIMPL; }

    HRESULT result = S_OK;
    ULONG references = 0;
    int creations = 0;
    DWORD context = 0;

private:
    static HRESULT WINAPI Create(REFCLSID classId, IUnknown* outer, DWORD context,
                                 REFIID interfaceId, void** object) {
        EXPECT_TRUE(IsEqualCLSID(CLSID_StdGlobalInterfaceTable, classId));
        EXPECT_TRUE(IsEqualIID(IID_IGlobalInterfaceTable, interfaceId));
        EXPECT_EQ(nullptr, outer);
        ++current_->creations;
        current_->context = context;
        if (FAILED(current_->result)) return current_->result;
        current_->AddRef();
        *object = current_;
        return S_OK;
    }

    static inline NotedInterfaceTable* current_ = nullptr;
    const test::ImportPatch<decltype(&CoCreateInstance)> creation_{"CoCreateInstance", &Create};
};

class ComModuleTest : public testing::Test {
protected:
    ComModuleTest() {
        CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED);
        endings.clear();
    }
    ~ComModuleTest() override { CoUninitialize(); }
};

TEST_F(ComModuleTest, LockCountFollowsLocksAndUnlocks) {
    CComModule module(kIdentity);
    EXPECT_EQ(0, module.GetLockCount());
    EXPECT_EQ(1, module.Lock());
    EXPECT_EQ(2, module.Lock());
    EXPECT_EQ(2, module.GetLockCount());
    EXPECT_EQ(1, module.Unlock());
    EXPECT_EQ(0, module.Unlock());
    EXPECT_EQ(0, module.GetLockCount());
}

TEST_F(ComModuleTest, InterfaceTableIsHandedOutWithAnAddedReference) {
    CComModule module(kIdentity);
    IGlobalInterfaceTable* first = nullptr;
    IGlobalInterfaceTable* second = nullptr;
    ASSERT_THAT(module.GetGITPtr(&first), IsOk());
    ASSERT_THAT(module.GetGITPtr(&second), IsOk());
    EXPECT_NE(nullptr, first);
    EXPECT_EQ(first, second);
    second->Release();
    first->Release();
    ASSERT_THAT(module.GetGITPtr(&first), IsOk());
    first->Release();
}

TEST_F(ComModuleTest, InterfaceTableWithoutAnOutputIsRefused) {
    CComModule module(kIdentity);
    EXPECT_THAT(module.GetGITPtr(nullptr), Fails(E_POINTER));
}

TEST_F(ComModuleTest, InterfaceTableIsMadeOnceInTheProcess) {
    NotedInterfaceTable noted;
    CComModule module(kIdentity);
    EXPECT_EQ(0, noted.creations);
    IGlobalInterfaceTable* table = nullptr;
    for (ULONG count = 1; count <= 3; ++count) {
        ASSERT_THAT(module.GetGITPtr(&table), IsOk());
        EXPECT_EQ(&noted, table);
        EXPECT_EQ(1, noted.creations);
        // The module's own and those that were handed out.
        EXPECT_EQ(count + 1, noted.references);
    }
    EXPECT_EQ(static_cast<DWORD>(CLSCTX_INPROC_SERVER), noted.context);
}

TEST_F(ComModuleTest, InterfaceTableThatCannotBeMadeIsReportedAndTriedAgain) {
    NotedInterfaceTable noted;
    CComModule module(kIdentity);
    noted.result = REGDB_E_CLASSNOTREG;
    IGlobalInterfaceTable* table = &noted;
    EXPECT_THAT(module.GetGITPtr(&table), Fails(REGDB_E_CLASSNOTREG));
    EXPECT_EQ(nullptr, table);
    noted.result = S_OK;
    EXPECT_THAT(module.GetGITPtr(&table), IsOk());
    EXPECT_EQ(&noted, table);
}

TEST_F(ComModuleTest, ClassesAreReleasedFirstThenWhatWasRegisteredAndThenTheInterfaceTable) {
    NotedInterfaceTable noted;
    {
        CComModule module(kIdentity);
        module.AddTermination([] { endings.push_back("registered first"); });
        module.AddTermination([] { endings.push_back("registered last"); });
        IGlobalInterfaceTable* table = nullptr;
        ASSERT_THAT(module.GetGITPtr(&table), IsOk());
        table->Release();
        EXPECT_THAT(endings, ElementsAre());
    }
    EXPECT_THAT(endings, ElementsAre("first class", "last class", "registered first",
                                     "registered last", "interface table"));
    EXPECT_EQ(0u, noted.references);
}

TEST_F(ComModuleTest, TableThatWasNeverUsedIsNotMadeAtTheEnd) {
    const NotedInterfaceTable noted;
    { const CComModule module(kIdentity); }
    EXPECT_THAT(endings, ElementsAre("first class", "last class"));
    EXPECT_EQ(0, noted.creations);
}

TEST_F(ComModuleTest, TerminationsStillFindTheirModule) {
    const CComModule* gone = nullptr;
    {
        const CComModule module(kIdentity);
        gone = &module;
    }
    EXPECT_EQ(gone, moduleAtTheEnd);
}

TEST_F(ComModuleTest, LocksOfSeveralThreadsAreAllCounted) {
    CComModule module(kIdentity);
    constexpr int kThreads = 4;
    constexpr int kRounds = 20000;
    std::vector<std::vector<LONG>> counts(kThreads);
    std::vector<std::thread> threads;
    for (std::vector<LONG>& own : counts) {
        threads.emplace_back([&] {
            for (int round = 0; round < kRounds; ++round) own.push_back(module.Lock());
        });
    }
    for (std::thread& thread : threads) thread.join();
    // Each count is returned once.
    std::set<LONG> all;
    for (const std::vector<LONG>& own : counts) all.insert(own.begin(), own.end());
    EXPECT_EQ(static_cast<std::size_t>(kThreads * kRounds), all.size());
    EXPECT_EQ(kThreads * kRounds, module.GetLockCount());
}

TEST_F(ComModuleTest, RegistrationRunsInTheSystemsDefaultLocale) {
    const LCID before = GetThreadLocale();
    const LCID other = MAKELCID(MAKELANGID(LANG_RUSSIAN, SUBLANG_DEFAULT), SORT_DEFAULT);
    ASSERT_TRUE(SetThreadLocale(other));
    LocaleNotingModule module;
    module.RegisterServer();
    const LCID registering = std::exchange(module.seen, 0);
    const LCID afterwards = GetThreadLocale();
    module.UnregisterServer();
    const LCID unregistering = module.seen;
    const LCID atTheEnd = GetThreadLocale();
    SetThreadLocale(before);
    EXPECT_EQ(GetSystemDefaultLCID(), registering);
    EXPECT_EQ(other, afterwards);
    EXPECT_EQ(GetSystemDefaultLCID(), unregistering);
    EXPECT_EQ(other, atTheEnd);
}

}  // namespace
}  // namespace depot
