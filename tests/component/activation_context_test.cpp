// The activation context during calls and after them.
#include "component/component.h"
#include "support/import_patch.h"
#include "support/results.h"

namespace depot::test {
namespace {

constexpr char kManifest[] =
    "<?xml version=\"1.0\" encoding=\"UTF-8\" standalone=\"yes\"?>"
    "<assembly xmlns=\"urn:schemas-microsoft-com:asm.v1\" manifestVersion=\"1.0\">"
    "<assemblyIdentity type=\"win32\" name=\"Client\" version=\"1.0.0.0\"/></assembly>";

HANDLE CurrentContext() {
    HANDLE context = nullptr;
    EXPECT_TRUE(GetCurrentActCtx(&context));
    ReleaseActCtx(context);
    return context;
}

// Whether the current context brings the common controls of version 6, as that of the DLL does and
// the client's does not.
bool IsContextOfTheDll() {
    ACTCTX_SECTION_KEYED_DATA found = {};
    found.cbSize = sizeof(found);
    return FindActCtxSectionStringA(0, nullptr, ACTIVATION_CONTEXT_SECTION_DLL_REDIRECTION,
                                    "comctl32.dll", &found) != FALSE;
}

// A context of the client's own, which every call has to leave current.
class ClientContext {
public:
    explicit ClientContext(const ScratchFolder& folder) {
        const std::string manifest = folder.MakeFile("client.manifest", kManifest);
        ACTCTXA request = {};
        request.cbSize = sizeof(request);
        request.lpSource = manifest.c_str();
        context_ = CreateActCtxA(&request);
        EXPECT_NE(INVALID_HANDLE_VALUE, context_);
        EXPECT_TRUE(ActivateActCtx(context_, &cookie_));
    }
    ~ClientContext() {
        EXPECT_TRUE(DeactivateActCtx(0, cookie_));
        ReleaseActCtx(context_);
    }
    ClientContext(const ClientContext&) = delete;
    ClientContext& operator=(const ClientContext&) = delete;

    void ExpectCurrent() const { EXPECT_EQ(context_, CurrentContext()); }

private:
    HANDLE context_ = nullptr;
    ULONG_PTR cookie_ = 0;
};

class ActivationContextTest : public ComponentTest {
protected:
    const ClientContext context_{folder_};
};

TEST_F(ActivationContextTest, SuccessfulMethodsRestoreTheContext) {
    DefineDepot("A", "Depot A");
    folder_.MakeFile("A\\a.kra", "");
    Session session(*api_);
    context_.ExpectCurrent();
    EXPECT_THAT(api_->DPLoadFile(session.Address(), Text("<A>\\a.kra")), IsOk());
    context_.ExpectCurrent();
    EXPECT_THAT(api_->DPSetProfileString(session, Text("S"), Text("K"), Text("1")), IsOk());
    context_.ExpectCurrent();
    EXPECT_EQ(L"1", Read(session, L"S", L"K"));
    context_.ExpectCurrent();
    ULONG number = 0;
    EXPECT_THAT(api_->DPGetProfileInt(session, Text("S"), Text("K"), 0, &number), IsOk());
    context_.ExpectCurrent();
    EXPECT_THAT(api_->DPFlushFile(session), IsOk());
    context_.ExpectCurrent();
    EXPECT_THAT(api_->DPFileExists(session, Text("<A>\\a.kra")), IsOk());
    context_.ExpectCurrent();
    OutText path;
    EXPECT_THAT(api_->DPGetDefaultDPPath(session, path), IsOk());
    context_.ExpectCurrent();
    EXPECT_THAT(api_->DPPathConvertDPtoFS(Text("<A>\\a.kra"), path), IsOk());
    context_.ExpectCurrent();
    EXPECT_THAT(api_->DPGetDepotDisplayPath(session, Text("<A>\\a.kra"), path), IsOk());
    context_.ExpectCurrent();
    EXPECT_THAT(api_->DPGetPathFromDisplayName(session, Text("<Depot A>\\"), path), IsOk());
    context_.ExpectCurrent();
    EXPECT_THAT(api_->DPSetSelItemPath(session, Text("<A>\\a.kra")), IsOk());
    context_.ExpectCurrent();
}

TEST_F(ActivationContextTest, FileMethodsRestoreTheContext) {
    DefineDepot("A", "Depot A");
    folder_.MakeFile("A\\a.kra", "[S]\n");
    Session session(*api_);
    LONG count = 0;
    OutText text;
    EXPECT_THAT(
        api_->DPFindInit(session.Address(), Text("<A>\\*.kra"), Text(""), APP_SKEIN, &count),
        IsOk());
    context_.ExpectCurrent();
    api_->DPFindNext(session, 0, text);
    context_.ExpectCurrent();
    EXPECT_THAT(api_->DPIsPathWriteAble(session, Text("<A>\\")), IsOk());
    context_.ExpectCurrent();
    EXPECT_THAT(api_->DPMakeCopyFromSrcFile(session, Text("<A>\\a.kra"), text), IsOk());
    context_.ExpectCurrent();
    Text local((folder_.Path() + "\\local.kra").c_str());
    EXPECT_THAT(api_->DPCopyFileToLocalFS(session, Text("<A>\\a.kra"), local, VARIANT_FALSE),
                IsOk());
    context_.ExpectCurrent();
    EXPECT_THAT(api_->DPRenameFile(session, Text("<A>\\a.kra"), Text("<A>\\b.kra")), IsOk());
    context_.ExpectCurrent();
    EXPECT_THAT(api_->DPDeleteFile(session, Text("<A>\\b.kra")), IsOk());
    context_.ExpectCurrent();
    api_->DPPublishSkesDepFiles(session);
    context_.ExpectCurrent();
    api_->DPBrowse(0, APP_SKEIN, PROMPT_OPEN, VARIANT_TRUE, VARIANT_TRUE, 0, 0, text);
    api_->DPBrowseMultiSel(0, APP_SKEIN, VARIANT_TRUE, VARIANT_TRUE, 0, 0, text, 100);
    context_.ExpectCurrent();
}

TEST_F(ActivationContextTest, TypeDescriptionAndFactoryRestoreTheContext) {
    UINT count = 0;
    EXPECT_THAT(api_->GetTypeInfoCount(&count), IsOk());
    ITypeInfo* typeInfo = nullptr;
    EXPECT_THAT(api_->GetTypeInfo(0, 0, &typeInfo), IsOk());
    typeInfo->Release();
    void* object = nullptr;
    ASSERT_THAT(Library::Own().GetClassObject(CLSID_DepotIntrApi, IID_IClassFactory, &object),
                IsOk());
    const Com<IClassFactory> factory(static_cast<IClassFactory*>(object));
    EXPECT_THAT(factory->CreateInstance(nullptr, IID_IClassFactory, &object), Fails(E_NOINTERFACE));
    EXPECT_THAT(factory->LockServer(TRUE), IsOk());
    EXPECT_THAT(factory->LockServer(FALSE), IsOk());
    context_.ExpectCurrent();
}

TEST_F(ActivationContextTest, FailingMethodsRestoreTheContext) {
    LONG_PTR handle = 1;
    OutText text;
    ULONG number = 0;
    EXPECT_THAT(api_->DPInitialize(nullptr), IsRefused());
    EXPECT_THAT(api_->DPLoadFile(&handle, Text("<A>\\a.kra")), IsRefused());
    EXPECT_THAT(api_->DPGetProfileString(1, Text("S"), Text("K"), Text("D"), text, 10),
                IsRefused());
    EXPECT_THAT(api_->DPGetProfileInt(1, Text("S"), Text("K"), 0, &number), IsRefused());
    EXPECT_THAT(api_->DPSetProfileString(1, Text("S"), Text("K"), Text("V")), IsRefused());
    EXPECT_THAT(api_->DPFlushFile(0), IsRefused());
    EXPECT_THAT(api_->DPFileExists(0, Text("<Nowhere>\\a.kra")), IsRefused());
    EXPECT_THAT(api_->DPGetDepotDisplayPath(0, Text("<Nowhere>\\a.kra"), text), IsRefused());
    EXPECT_THAT(api_->DPGetPathFromDisplayName(0, Text("<Nowhere>\\a.kra"), text), IsRefused());
    EXPECT_THAT(api_->DPPathConvertDPtoFS(Text(), text), IsRefused());
    EXPECT_THAT(api_->DPSetSelItemPath(0, Text("x")), IsRefused());
    EXPECT_THAT(api_->DPUnInitialize(1), IsOk());
    context_.ExpectCurrent();
}

TEST_F(ActivationContextTest, EntryPointsRestoreTheContext) {
    const Library& library = Library::Own();
    void* object = nullptr;
    EXPECT_THAT(library.CanUnloadNow(), IsRefused());
    EXPECT_THAT(library.GetClassObject(GUID_NULL, IID_IUnknown, &object),
                Fails(CLASS_E_CLASSNOTAVAILABLE));
    EXPECT_THAT(library.Register(), IsOk());
    context_.ExpectCurrent();
    ScratchKey empty(HKEY_CURRENT_USER, "Software\\DepotTests\\Gone");
    CreateRegistryKey(HKEY_CURRENT_USER, empty.Path());
    HKEY gone = nullptr;
    ASSERT_EQ(ERROR_SUCCESS, RegOpenKeyA(HKEY_CURRENT_USER, empty.Path().c_str(), &gone));
    ASSERT_EQ(ERROR_SUCCESS, RegOverridePredefKey(HKEY_CLASSES_ROOT, gone));
    RegCloseKey(gone);
    ASSERT_EQ(ERROR_SUCCESS, RegDeleteKeyA(HKEY_CURRENT_USER, empty.Path().c_str()));
    EXPECT_THAT(library.Register(), Fails());
    EXPECT_THAT(library.Unregister(), Fails());
    RegOverridePredefKey(HKEY_CLASSES_ROOT, nullptr);
    context_.ExpectCurrent();
}

TEST_F(ActivationContextTest, LateBoundCallsRestoreTheContext) {
    DISPPARAMS none = {};
    VARIANT result = {};
    EXPECT_THAT(api_->Invoke(1, IID_NULL, LOCALE_USER_DEFAULT, DISPATCH_METHOD, &none, &result,
                             nullptr, nullptr),
                IsOk());
    context_.ExpectCurrent();
    EXPECT_THAT(api_->DPUnInitialize(V_I4(&result)), IsOk());
    EXPECT_THAT(api_->Invoke(99, IID_NULL, LOCALE_USER_DEFAULT, DISPATCH_METHOD, &none, nullptr,
                             nullptr, nullptr),
                Fails(DISP_E_MEMBERNOTFOUND));
    context_.ExpectCurrent();
}

// The folder that this directory-service library returns tells in which context it was called.
class OwnContextTest : public ComponentTest {
protected:
    const ClientContext context_{folder_};
    const Library library_{CopyComponent(folder_, "context_probe\\qdirsvc.dll")};
    const Com<IDepotIntrApi> probed_ = library_.CreateApi();
};

TEST_F(OwnContextTest, ContextOfTheDllIsCurrentDuringAMethod) {
    OutText path;
    ASSERT_THAT(probed_->DPGetPathFromDisplayName(0, Text("<My Depot>\\"), path), IsOk());
    EXPECT_EQ(L"C:\\CommonControls6\\", path.Value());
    context_.ExpectCurrent();
}

// How often a library switched to its own context, and from it back to that of the caller.
class SwitchLog {
public:
    explicit SwitchLog(const Library& library)
        : activation_("ActivateActCtx", &Activate, library.Module()),
          deactivation_("DeactivateActCtx", &Deactivate, library.Module()) {
        activate_ = activation_.Genuine();
        deactivate_ = deactivation_.Genuine();
    }

    static inline int switches = 0;
    static inline int returns = 0;

private:
    static BOOL WINAPI Activate(HANDLE context, ULONG_PTR* cookie) {
        const BOOL done = activate_(context, cookie);
        if (IsContextOfTheDll()) ++switches;
        return done;
    }
    static BOOL WINAPI Deactivate(DWORD flags, ULONG_PTR cookie) {
        if (IsContextOfTheDll()) ++returns;
        return deactivate_(flags, cookie);
    }

    static inline decltype(&ActivateActCtx) activate_ = nullptr;
    static inline decltype(&DeactivateActCtx) deactivate_ = nullptr;
    const ImportPatch<decltype(&ActivateActCtx)> activation_;
    const ImportPatch<decltype(&DeactivateActCtx)> deactivation_;
};

// How often a library asked for memory, in its own context and in another one.
class AllocationLog {
public:
    explicit AllocationLog(const Library& library)
        : malloc_("malloc", &Allocate, library.Module()) {
        genuine_ = malloc_.Genuine();
    }

    static inline int inside = 0;
    static inline int outside = 0;

private:
    using Malloc = void* (*)(std::size_t);

    static void* Allocate(std::size_t size) {
        ++(IsContextOfTheDll() ? inside : outside);
        return genuine_(size);
    }

    static inline Malloc genuine_ = nullptr;
    const ImportPatch<Malloc> malloc_;
};

// A library of the test's own, in which nothing was loaded or made yet.
class ContextSwitchTest : public ComponentTest {
protected:
    ContextSwitchTest() {
        EXPECT_NE(Library::Own().Module(), library_.Module());
        // The first call of all makes the context.
        library_.CanUnloadNow();
    }

    // The call is made in the context of the DLL from its beginning to its end.
    template <class Call>
    void ExpectSwitch(const char* name, const Call& call) {
        SCOPED_TRACE(name);
        SwitchLog::switches = SwitchLog::returns = 0;
        call();
        EXPECT_EQ(1, SwitchLog::switches);
        EXPECT_EQ(1, SwitchLog::returns);
        context_.ExpectCurrent();
    }

    // The work that the call does is done in the context of the DLL.
    template <class Call>
    void ExpectWorkInside(const char* name, const Call& call) {
        SCOPED_TRACE(name);
        AllocationLog::inside = AllocationLog::outside = 0;
        call();
        EXPECT_LT(0, AllocationLog::inside);
        EXPECT_EQ(0, AllocationLog::outside);
    }

    Com<IClassFactory> Factory() const {
        void* object = nullptr;
        EXPECT_THAT(library_.GetClassObject(CLSID_DepotIntrApi, IID_IClassFactory, &object),
                    IsOk());
        return Com<IClassFactory>(static_cast<IClassFactory*>(object));
    }

    HRESULT Invoke(IDepotIntrApi& api, DISPID id) {
        DISPPARAMS none = {};
        return api.Invoke(id, IID_NULL, LOCALE_USER_DEFAULT, DISPATCH_METHOD, &none, nullptr,
                          nullptr, nullptr);
    }

    const ClientContext context_{folder_};
    const Library library_{CopyComponent(folder_, "qdirsvc.dll")};
};

#define EXPECT_SWITCH(call) ExpectSwitch(#call, [&] { call; })
#define EXPECT_WORK_INSIDE(call) ExpectWorkInside(#call, [&] { call; })

TEST_F(ContextSwitchTest, EntryPointsAndFactorySwitchToTheContextOfTheDll) {
    const Com<IClassFactory> factory = Factory();
    void* object = nullptr;
    const SwitchLog log(library_);
    EXPECT_SWITCH(library_.CanUnloadNow());
    EXPECT_SWITCH(library_.GetClassObject(GUID_NULL, IID_IUnknown, &object));
    EXPECT_SWITCH(library_.Register());
    EXPECT_SWITCH(library_.Unregister());
    EXPECT_SWITCH(factory->CreateInstance(nullptr, IID_IClassFactory, &object));
    EXPECT_SWITCH(factory->LockServer(TRUE));
    EXPECT_SWITCH(factory->LockServer(FALSE));
}

TEST_F(ContextSwitchTest, TypeDescriptionAndLateBindingSwitchToTheContextOfTheDll) {
    const Com<IDepotIntrApi> api = library_.CreateApi();
    UINT count = 0;
    ITypeInfo* type = nullptr;
    DISPID id = 0;
    const SwitchLog log(library_);
    EXPECT_SWITCH(api->GetTypeInfoCount(&count));
    EXPECT_SWITCH(api->GetTypeInfo(1, LOCALE_USER_DEFAULT, &type));
    EXPECT_SWITCH(api->GetIDsOfNames(IID_NULL, nullptr, 1, LOCALE_USER_DEFAULT, &id));
    EXPECT_SWITCH(Invoke(*api, 99));
}

TEST_F(ContextSwitchTest, EveryMethodSwitchesToTheContextOfTheDll) {
    constexpr VARIANT_BOOL kYes = VARIANT_TRUE;
    const Com<IDepotIntrApi> api = library_.CreateApi();
    LONG_PTR handle = 0;
    LONG count = 0;
    ULONG number = 0;
    OutText text;
    const SwitchLog log(library_);
    EXPECT_SWITCH(api->DPInitialize(&handle));
    EXPECT_SWITCH(api->DPBrowse(0, APP_SKEIN, PROMPT_OPEN, kYes, kYes, 0, 0, text));
    EXPECT_SWITCH(api->DPUnInitialize(handle));
    EXPECT_SWITCH(api->DPLoadFile(&handle, Text()));
    EXPECT_SWITCH(api->DPGetProfileString(0, Text(), Text(), Text(), text, 10));
    EXPECT_SWITCH(api->DPGetProfileInt(0, Text(), Text(), 0, &number));
    EXPECT_SWITCH(api->DPGetDepotDisplayPath(0, Text(), text));
    EXPECT_SWITCH(api->DPSetProfileString(0, Text(), Text(), Text()));
    EXPECT_SWITCH(api->DPPublishSkesDepFiles(0));
    EXPECT_SWITCH(api->DPBrowseMultiSel(0, APP_SKEIN, kYes, kYes, 0, 0, text, 100));
    EXPECT_SWITCH(api->DPRenameFile(0, Text(), Text()));
    EXPECT_SWITCH(api->DPDeleteFile(0, Text()));
    EXPECT_SWITCH(api->DPCopyFileToLocalFS(0, Text(), Text(), kYes));
    EXPECT_SWITCH(api->DPFileExists(0, Text()));
    EXPECT_SWITCH(api->DPFlushFile(0));
    EXPECT_SWITCH(api->DPPathConvertDPtoFS(Text(), text));
    EXPECT_SWITCH(api->DPFindInit(&handle, Text(), Text(), APP_TYPE{}, &count));
    EXPECT_SWITCH(api->DPFindNext(0, 0, text));
    EXPECT_SWITCH(api->DPGetPathFromDisplayName(0, Text(), text));
    EXPECT_SWITCH(api->DPGetDefaultDPPath(0, text));
    EXPECT_SWITCH(api->DPIsPathWriteAble(0, Text()));
    EXPECT_SWITCH(api->DPSetSelItemPath(0, Text()));
    EXPECT_SWITCH(api->DPMakeCopyFromSrcFile(0, Text(), text));
}

TEST_F(ContextSwitchTest, EntryPointsAndFactoryWorkInTheContextOfTheDll) {
    const AllocationLog log(library_);
    Com<IClassFactory> factory;
    void* object = nullptr;
    EXPECT_WORK_INSIDE(factory = Factory());
    EXPECT_WORK_INSIDE(factory->CreateInstance(nullptr, IID_IClassFactory, &object));
    EXPECT_WORK_INSIDE(library_.Register());
    EXPECT_WORK_INSIDE(library_.Unregister());
}

TEST_F(ContextSwitchTest, LateBindingWorksInTheContextOfTheDll) {
    const Com<IDepotIntrApi> api = library_.CreateApi();
    const AllocationLog log(library_);
    // The first of these loads the type library.
    ITypeInfo* type = nullptr;
    EXPECT_WORK_INSIDE(api->GetTypeInfo(0, LOCALE_USER_DEFAULT, &type));
    type->Release();
    LONG_PTR handle = 0;
    EXPECT_WORK_INSIDE(api->DPInitialize(&handle));
    VARIANT argument = {};
    V_VT(&argument) = VT_I4;
    V_I4(&argument) = static_cast<LONG>(handle);
    DISPPARAMS parameters = {&argument, nullptr, 1, 0};
    EXPECT_WORK_INSIDE(api->Invoke(3, IID_NULL, LOCALE_USER_DEFAULT, DISPATCH_METHOD, &parameters,
                                   nullptr, nullptr, nullptr));
}

TEST_F(ContextSwitchTest, LookingUpNamesFirstLoadsTheLibraryInTheContextOfTheDll) {
    const Com<IDepotIntrApi> api = library_.CreateApi();
    const AllocationLog log(library_);
    std::wstring name = L"DPInitialize";
    LPOLESTR names[] = {name.data()};
    DISPID id = 0;
    EXPECT_WORK_INSIDE(api->GetIDsOfNames(IID_NULL, names, 1, LOCALE_USER_DEFAULT, &id));
    EXPECT_EQ(1, id);
}

}  // namespace
}  // namespace depot::test
