// The activation context during calls and after them.
#include "component/component.h"

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

// The client has an activation context of its own, which every call has to leave current.
class ActivationContextTest : public ComponentTest {
protected:
    ActivationContextTest() {
        const std::string manifest = folder_.MakeFile("client.manifest", kManifest);
        ACTCTXA request = {};
        request.cbSize = sizeof(request);
        request.lpSource = manifest.c_str();
        context_ = CreateActCtxA(&request);
        EXPECT_NE(INVALID_HANDLE_VALUE, context_);
        EXPECT_TRUE(ActivateActCtx(context_, &cookie_));
    }
    ~ActivationContextTest() override {
        EXPECT_TRUE(DeactivateActCtx(0, cookie_));
        ReleaseActCtx(context_);
    }

    void ExpectOwnContext() { EXPECT_EQ(context_, CurrentContext()); }

    HANDLE context_ = nullptr;
    ULONG_PTR cookie_ = 0;
};

TEST_F(ActivationContextTest, SuccessfulMethodsRestoreTheContext) {
    DefineDepot("A", "Depot A");
    folder_.MakeFile("A\\a.kra", "");
    Session session(*api_);
    ExpectOwnContext();
    EXPECT_EQ(S_OK, api_->DPLoadFile(session.Address(), Text("<A>\\a.kra")));
    ExpectOwnContext();
    EXPECT_EQ(S_OK, api_->DPSetProfileString(session, Text("S"), Text("K"), Text("1")));
    ExpectOwnContext();
    EXPECT_EQ(L"1", Read(session, L"S", L"K"));
    ExpectOwnContext();
    ULONG number = 0;
    EXPECT_EQ(S_OK, api_->DPGetProfileInt(session, Text("S"), Text("K"), 0, &number));
    ExpectOwnContext();
    EXPECT_EQ(S_OK, api_->DPFlushFile(session));
    ExpectOwnContext();
    EXPECT_EQ(S_OK, api_->DPFileExists(session, Text("<A>\\a.kra")));
    ExpectOwnContext();
    OutText path;
    EXPECT_EQ(S_OK, api_->DPGetDefaultDPPath(session, path));
    ExpectOwnContext();
    EXPECT_EQ(S_OK, api_->DPPathConvertDPtoFS(Text("<A>\\a.kra"), path));
    ExpectOwnContext();
    EXPECT_EQ(S_OK, api_->DPGetDepotDisplayPath(session, Text("<A>\\a.kra"), path));
    ExpectOwnContext();
    EXPECT_EQ(S_OK, api_->DPGetPathFromDisplayName(session, Text("<Depot A>\\"), path));
    ExpectOwnContext();
    EXPECT_EQ(S_OK, api_->DPSetSelItemPath(session, Text("<A>\\a.kra")));
    ExpectOwnContext();
}

TEST_F(ActivationContextTest, FileMethodsRestoreTheContext) {
    DefineDepot("A", "Depot A");
    folder_.MakeFile("A\\a.kra", "[S]\n");
    Session session(*api_);
    LONG count = 0;
    OutText text;
    EXPECT_EQ(S_OK,
              api_->DPFindInit(session.Address(), Text("<A>\\*.kra"), Text(""), APP_SKEIN, &count));
    ExpectOwnContext();
    api_->DPFindNext(session, 0, text);
    ExpectOwnContext();
    EXPECT_EQ(S_OK, api_->DPIsPathWriteAble(session, Text("<A>\\")));
    ExpectOwnContext();
    EXPECT_EQ(S_OK, api_->DPMakeCopyFromSrcFile(session, Text("<A>\\a.kra"), text));
    ExpectOwnContext();
    Text local((folder_.Path() + "\\local.kra").c_str());
    EXPECT_EQ(S_OK, api_->DPCopyFileToLocalFS(session, Text("<A>\\a.kra"), local, VARIANT_FALSE));
    ExpectOwnContext();
    EXPECT_EQ(S_OK, api_->DPRenameFile(session, Text("<A>\\a.kra"), Text("<A>\\b.kra")));
    ExpectOwnContext();
    EXPECT_EQ(S_OK, api_->DPDeleteFile(session, Text("<A>\\b.kra")));
    ExpectOwnContext();
    api_->DPPublishSkesDepFiles(session);
    ExpectOwnContext();
    api_->DPBrowse(0, APP_SKEIN, PROMPT_OPEN, VARIANT_TRUE, VARIANT_TRUE, 0, 0, text);
    api_->DPBrowseMultiSel(0, APP_SKEIN, VARIANT_TRUE, VARIANT_TRUE, 0, 0, text, 100);
    ExpectOwnContext();
}

TEST_F(ActivationContextTest, TypeDescriptionAndFactoryRestoreTheContext) {
    UINT count = 0;
    EXPECT_EQ(S_OK, api_->GetTypeInfoCount(&count));
    ITypeInfo* typeInfo = nullptr;
    EXPECT_EQ(S_OK, api_->GetTypeInfo(0, 0, &typeInfo));
    typeInfo->Release();
    void* object = nullptr;
    ASSERT_EQ(S_OK, Library::Own().GetClassObject(CLSID_DepotIntrApi, IID_IClassFactory, &object));
    const Com<IClassFactory> factory(static_cast<IClassFactory*>(object));
    EXPECT_EQ(E_NOINTERFACE, factory->CreateInstance(nullptr, IID_IClassFactory, &object));
    EXPECT_EQ(S_OK, factory->LockServer(TRUE));
    EXPECT_EQ(S_OK, factory->LockServer(FALSE));
    ExpectOwnContext();
}

TEST_F(ActivationContextTest, FailingMethodsRestoreTheContext) {
    LONG_PTR handle = 1;
    OutText text;
    ULONG number = 0;
    EXPECT_EQ(S_FALSE, api_->DPInitialize(nullptr));
    EXPECT_EQ(S_FALSE, api_->DPLoadFile(&handle, Text("<A>\\a.kra")));
    EXPECT_EQ(S_FALSE, api_->DPGetProfileString(1, Text("S"), Text("K"), Text("D"), text, 10));
    EXPECT_EQ(S_FALSE, api_->DPGetProfileInt(1, Text("S"), Text("K"), 0, &number));
    EXPECT_EQ(S_FALSE, api_->DPSetProfileString(1, Text("S"), Text("K"), Text("V")));
    EXPECT_EQ(S_FALSE, api_->DPFlushFile(0));
    EXPECT_EQ(S_FALSE, api_->DPFileExists(0, Text("<Nowhere>\\a.kra")));
    EXPECT_EQ(S_FALSE, api_->DPGetDepotDisplayPath(0, Text("<Nowhere>\\a.kra"), text));
    EXPECT_EQ(S_FALSE, api_->DPGetPathFromDisplayName(0, Text("<Nowhere>\\a.kra"), text));
    EXPECT_EQ(S_FALSE, api_->DPPathConvertDPtoFS(Text(), text));
    EXPECT_EQ(S_FALSE, api_->DPSetSelItemPath(0, Text("x")));
    EXPECT_EQ(S_OK, api_->DPUnInitialize(1));
    ExpectOwnContext();
}

TEST_F(ActivationContextTest, EntryPointsRestoreTheContext) {
    const Library& library = Library::Own();
    void* object = nullptr;
    EXPECT_EQ(S_FALSE, library.CanUnloadNow());
    EXPECT_EQ(CLASS_E_CLASSNOTAVAILABLE, library.GetClassObject(GUID_NULL, IID_IUnknown, &object));
    EXPECT_EQ(S_OK, library.Register());
    ExpectOwnContext();
    ScratchKey empty(HKEY_CURRENT_USER, "Software\\DepotTests\\Gone");
    CreateRegistryKey(HKEY_CURRENT_USER, empty.Path());
    HKEY gone = nullptr;
    ASSERT_EQ(ERROR_SUCCESS, RegOpenKeyA(HKEY_CURRENT_USER, empty.Path().c_str(), &gone));
    ASSERT_EQ(ERROR_SUCCESS, RegOverridePredefKey(HKEY_CLASSES_ROOT, gone));
    RegCloseKey(gone);
    ASSERT_EQ(ERROR_SUCCESS, RegDeleteKeyA(HKEY_CURRENT_USER, empty.Path().c_str()));
    EXPECT_TRUE(FAILED(library.Register()));
    EXPECT_TRUE(FAILED(library.Unregister()));
    RegOverridePredefKey(HKEY_CLASSES_ROOT, nullptr);
    ExpectOwnContext();
}

TEST_F(ActivationContextTest, LateBoundCallsRestoreTheContext) {
    DISPPARAMS none = {};
    VARIANT result = {};
    EXPECT_EQ(S_OK, api_->Invoke(1, IID_NULL, LOCALE_USER_DEFAULT, DISPATCH_METHOD, &none, &result,
                                 nullptr, nullptr));
    ExpectOwnContext();
    EXPECT_EQ(S_OK, api_->DPUnInitialize(V_I4(&result)));
    EXPECT_EQ(DISP_E_MEMBERNOTFOUND,
              api_->Invoke(99, IID_NULL, LOCALE_USER_DEFAULT, DISPATCH_METHOD, &none, nullptr,
                           nullptr, nullptr));
    ExpectOwnContext();
}

// The folder that this directory-service library returns tells in which context it was called.
class OwnContextTest : public ActivationContextTest {
protected:
    const Library library_{CopyComponent(folder_, "context_probe\\qdirsvc.dll")};
    const Com<IDepotIntrApi> probed_ = library_.CreateApi();
};

TEST_F(OwnContextTest, ContextOfTheDllIsCurrentDuringAMethod) {
    OutText path;
    ASSERT_EQ(S_OK, probed_->DPGetDefaultDPPath(0, path));
    EXPECT_EQ(L"C:\\CommonControls6\\", path.Value());
    ExpectOwnContext();
}

}  // namespace
}  // namespace depot::test
