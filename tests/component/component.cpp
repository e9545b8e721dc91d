#include "component/component.h"

#include "platform/compiler.h"
#include "platform/module_state.h"
#include "support/box_log.h"
#include "support/results.h"

namespace depot::test {

Library::Library(const std::string& path) {
    // A copy without resources tells so in a box.
    const BoxLog boxes;
    module_ = LoadLibraryA(path.c_str());
    EXPECT_NE(nullptr, module_) << path << " does not load: error " << GetLastError();
}

Library::~Library() {
    FreeLibrary(module_);
}

Library& Library::Own() {
    static Library library(ProgramFolder() + "DepotIntr.dll");
    return library;
}

HRESULT Library::CanUnloadNow() const {
    return FunctionCast<HRESULT(WINAPI*)()>(Entry("DllCanUnloadNow"))();
}

HRESULT Library::GetClassObject(REFCLSID classId, REFIID interfaceId, void** object) const {
    using Function = HRESULT(WINAPI*)(REFCLSID, REFIID, void**);
    return FunctionCast<Function>(Entry("DllGetClassObject"))(classId, interfaceId, object);
}

HRESULT Library::Register() const {
    return FunctionCast<HRESULT(WINAPI*)()>(Entry("DllRegisterServer"))();
}

HRESULT Library::Unregister() const {
    return FunctionCast<HRESULT(WINAPI*)()>(Entry("DllUnregisterServer"))();
}

Com<IDepotIntrApi> Library::CreateApi() const {
    IClassFactory* factory = nullptr;
    const HRESULT found =
        GetClassObject(CLSID_DepotIntrApi, IID_IClassFactory, reinterpret_cast<void**>(&factory));
    EXPECT_THAT(found, IsOk());
    if (FAILED(found)) return nullptr;
    const Com<IClassFactory> owned(factory);
    IDepotIntrApi* api = nullptr;
    EXPECT_THAT(factory->CreateInstance(nullptr, IID_IDepotIntrApi, reinterpret_cast<void**>(&api)),
                IsOk());
    return Com<IDepotIntrApi>(api);
}

std::string ProgramFolder() {
    return OwnModuleFolder();
}

std::string CopyComponent(const ScratchFolder& folder, const std::string& directoryService) {
    const std::string copy = folder.At("DepotIntr.dll");
    EXPECT_TRUE(CopyFileA((ProgramFolder() + "DepotIntr.dll").c_str(), copy.c_str(), TRUE));
    if (!directoryService.empty()) {
        EXPECT_TRUE(CopyFileA((ProgramFolder() + directoryService).c_str(),
                              folder.At("qdirsvc.dll").c_str(), TRUE));
    }
    return copy;
}

std::wstring Wide(const std::string& text) {
    return std::wstring(text.begin(), text.end());
}

Com<IDepotIntrApi> CreateApi() {
    IDepotIntrApi* api = nullptr;
    EXPECT_THAT(CoCreateInstance(CLSID_DepotIntrApi, nullptr, CLSCTX_INPROC_SERVER,
                                 IID_IDepotIntrApi, reinterpret_cast<void**>(&api)),
                IsOk());
    return Com<IDepotIntrApi>(api);
}

ComponentTest::ComponentTest() {
    EXPECT_THAT(Library::Own().Register(), IsOk());
    product_.Text("", "UserDir", folder_.MakeFolder("Farrow\\User"));
    api_ = CreateApi();
}

std::string ComponentTest::DefineDepot(const std::string& name, const std::string& displayName) {
    const std::string root = folder_.MakeFolder(name);
    depots_.Text(name, "Path1", root);
    if (!displayName.empty()) depots_.Text(name, "DisplayName.eng", displayName);
    return root;
}

std::wstring ComponentTest::Read(LONG_PTR session, const wchar_t* section, const wchar_t* key,
                                 const wchar_t* defaultValue, ULONG size) {
    OutText value;
    const HRESULT result = api_->DPGetProfileString(session, Text(section), Text(key),
                                                    Text(defaultValue), value, size);
    return result == S_OK ? value.Value() : L"(failed)";
}

}  // namespace depot::test
