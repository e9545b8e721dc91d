// The type library that the DLL carries, field by field.
#include <vector>

#include "component/component.h"
#include "platform/text.h"
#include "support/results.h"

namespace depot::test {
namespace {

// The methods as the library describes them, in the order of their slots.
const wchar_t* const kMethods[] = {
    L"DPInitialize([out,retval] LONG_PTR* plDPIntr)",
    L"DPBrowse([in] LONG_PTR lDPIntr, [in] APP_TYPE appType, [in] BROWSE_TYPE browseType, "
    L"[in] VARIANT_BOOL bEdit, [in] VARIANT_BOOL bPerformFileOP, [in] unsigned long nHelpTopicID, "
    L"[in] LONG_PTR lpParentWnd, [out,retval] BSTR* bstrFilePath)",
    L"DPUnInitialize([in] LONG_PTR lDPIntr)",
    L"DPLoadFile([in,out] LONG_PTR* plDPIntr, [in] BSTR* bstrFileToLoad)",
    L"DPGetProfileString([in] LONG_PTR lDPIntr, [in] BSTR* bstrSectName, [in] BSTR* bstrKeyName, "
    L"[in] BSTR* bstrDefVal, [out] BSTR* bstrKeyVal, [in] unsigned long nSize)",
    L"DPGetProfileInt([in] LONG_PTR lDPIntr, [in] BSTR* bstrSectName, [in] BSTR* bstrKeyName, "
    L"[in] unsigned long nDefVal, [out,retval] unsigned long* pnKeyVal)",
    L"DPGetDepotDisplayPath([in] LONG_PTR lDPIntr, [in] BSTR* bstrFileName, "
    L"[out,retval] BSTR* bstrDspName)",
    L"DPSetProfileString([in] LONG_PTR lDPIntr, [in] BSTR* bstrSectName, [in] BSTR* bstrKeyName, "
    L"[in] BSTR* bstValue)",
    L"DPPublishSkesDepFiles([in] LONG_PTR lDPIntr)",
    L"DPBrowseMultiSel([in] LONG_PTR lDPIntr, [in] APP_TYPE appType, [in] VARIANT_BOOL bEdit, "
    L"[in] VARIANT_BOOL bPerformFileOP, [in] unsigned long nHelpTopicID, "
    L"[in] LONG_PTR lpParentWnd, [out] BSTR* bstrFileList, [in] short nSize)",
    L"DPRenameFile([in] LONG_PTR lDPIntr, [in] BSTR* bstrOldFileName, "
    L"[in] BSTR* bstrNewFileName)",
    L"DPDeleteFile([in] LONG_PTR lDPIntr, [in] BSTR* bstrFileName)",
    L"DPCopyFileToLocalFS([in] LONG_PTR lDPIntr, [in] BSTR* bstrSrcFileName, "
    L"[in] BSTR* bstrDstFileName, [in] VARIANT_BOOL vbFailIfExists)",
    L"DPFileExists([in] LONG_PTR lDPIntr, [in] BSTR* bstrFileName)",
    L"DPFlushFile([in] LONG_PTR lDPIntr)",
    L"DPPathConvertDPtoFS([in] BSTR* bstrDPFilePath, [out,retval] BSTR* bstrFSFilePath)",
    L"DPFindInit([in,out] LONG_PTR* plDPIntr, [in] BSTR* bstrFilePath, [in] BSTR* bstrFileExt, "
    L"[in] APP_TYPE appType, [out,retval] long* nCount)",
    L"DPFindNext([in] LONG_PTR lDPIntr, [in] long lCount, [out,retval] BSTR* bstrFileName)",
    L"DPGetPathFromDisplayName([in] LONG_PTR lDPIntr, [in] BSTR* bstrDspName, "
    L"[out,retval] BSTR* bstrDPPath)",
    L"DPGetDefaultDPPath([in] LONG_PTR lDPIntr, [out,retval] BSTR* bstrDPPath)",
    L"DPIsPathWriteAble([in] LONG_PTR lDPIntr, [in] BSTR* bstrFilePath)",
    L"DPSetSelItemPath([in] LONG_PTR lDPIntr, [in] BSTR* bstrFilePath)",
    L"DPMakeCopyFromSrcFile([in] LONG_PTR lDPIntr, [in] BSTR* bstrSrcFile, "
    L"[out,retval] BSTR* bstrDstFile)",
};

// Those of the second interface, and their help.
struct NewMethod {
    const wchar_t* text;
    const wchar_t* help;
};
const NewMethod kNewMethods[] = {
    {L"LastErrorCode([in] LONG_PTR lDPIntr, [out,retval] long* plCode)",
     L"the code of the last failure, 0 for none; handle 0 asks for the thread's"},
    {L"LastErrorText([in] LONG_PTR lDPIntr, [out,retval] BSTR* pbstrText)",
     L"the text of the last failure; handle 0 asks for the thread's"},
    {L"Quiet([in] LONG_PTR lDPIntr, [in] VARIANT_BOOL bQuiet, "
     L"[out,retval] VARIANT_BOOL* pbBefore)",
     L"whether calls show no boxes and ask nothing; returns what it was"},
    {L"Exists([in] LONG_PTR lDPIntr, [in] BSTR bstrPath, [out,retval] VARIANT_BOOL* pbExists)",
     L"whether there is a file or folder of that path"},
    {L"IsWritable([in] LONG_PTR lDPIntr, [in] BSTR bstrPath, "
     L"[out,retval] VARIANT_BOOL* pbWritable)",
     L"whether the place can be written, found by trying"},
    {L"ReadText([in] LONG_PTR lDPIntr, [in] BSTR bstrFile, [out,retval] BSTR* pbstrText)",
     L"the whole text of a file"},
    {L"WriteText([in] LONG_PTR lDPIntr, [in] BSTR bstrFile, [in] BSTR bstrText, "
     L"[in=0] TEXT_ENCODING encoding, [out,retval] VARIANT_BOOL* pbDone)",
     L"writes the whole text of a file; returns whether it did"},
    {L"Find([in] LONG_PTR lDPIntr, [in] BSTR bstrFolder, [in=\"\"] BSTR bstrExtensions, "
     L"[in=0] FIND_WHAT what, [out,retval] VARIANT* pPaths)",
     L"the paths of what a folder holds, as an array"},
    {L"ChosenFiles([in] LONG_PTR lDPIntr, [out,retval] VARIANT* pPaths)",
     L"the paths that the last dialog's user chose, as an array"},
    {L"Copy([in] LONG_PTR lDPIntr, [in] BSTR bstrFrom, [in] BSTR bstrTo, "
     L"[in=0] VARIANT_BOOL bMayExist, [in,optional] VARIANT progress, "
     L"[out,retval] VARIANT_BOOL* pbDone)",
     L"copies a file or a folder with all it holds; returns whether it did"},
    {L"Move([in] LONG_PTR lDPIntr, [in] BSTR bstrFrom, [in] BSTR bstrTo, "
     L"[in=0] VARIANT_BOOL bMayExist, [in,optional] VARIANT progress, "
     L"[out,retval] VARIANT_BOOL* pbDone)",
     L"moves a file or a folder with all it holds; returns whether it did"},
    {L"MakeFolder([in] LONG_PTR lDPIntr, [in] BSTR bstrFolder, [in=0] VARIANT_BOOL bMayExist, "
     L"[out,retval] VARIANT_BOOL* pbDone)",
     L"makes a folder and those above it; returns whether it did"},
    {L"Depots([in] LONG_PTR lDPIntr, [out,retval] IDepotInfos** ppDepots)",
     L"the session's depots"},
};

std::wstring TakeText(BSTR text) {
    const std::wstring taken = text ? std::wstring(text, SysStringLen(text)) : std::wstring();
    SysFreeString(text);
    return taken;
}

std::wstring NameOf(ITypeInfo& type, MEMBERID member = MEMBERID_NIL) {
    BSTR name = nullptr;
    EXPECT_THAT(type.GetDocumentation(member, &name, nullptr, nullptr, nullptr), IsOk());
    return TakeText(name);
}

std::wstring HelpOf(ITypeInfo& type, MEMBERID member = MEMBERID_NIL) {
    BSTR help = nullptr;
    EXPECT_THAT(type.GetDocumentation(member, nullptr, &help, nullptr, nullptr), IsOk());
    return TakeText(help);
}

std::wstring ReferencedName(ITypeInfo& type, HREFTYPE reference) {
    ITypeInfo* found = nullptr;
    EXPECT_THAT(type.GetRefTypeInfo(reference, &found), IsOk());
    return NameOf(*Com<ITypeInfo>(found));
}

std::wstring TypeText(ITypeInfo& type, const TYPEDESC& description) {
    switch (description.vt) {
        case VT_PTR:
            return TypeText(type, *description.lptdesc) + L"*";
        case VT_USERDEFINED:
            return ReferencedName(type, description.hreftype);
        case VT_BSTR:
            return L"BSTR";
        case VT_BOOL:
            return L"VARIANT_BOOL";
        case VT_VARIANT:
            return L"VARIANT";
        case VT_I2:
            return L"short";
        case VT_I4:
            return L"long";
        case VT_UI4:
            return L"unsigned long";
        default:
            return L"type " + std::to_wstring(description.vt);
    }
}

std::wstring FlagsText(USHORT flags) {
    switch (flags) {
        case PARAMFLAG_FIN:
            return L"[in] ";
        case PARAMFLAG_FOUT:
            return L"[out] ";
        case PARAMFLAG_FIN | PARAMFLAG_FOPT:
            return L"[in,optional] ";
        case PARAMFLAG_FIN | PARAMFLAG_FOUT:
            return L"[in,out] ";
        case PARAMFLAG_FOUT | PARAMFLAG_FRETVAL:
            return L"[out,retval] ";
        default:
            return L"[flags " + std::to_wstring(flags) + L"] ";
    }
}

// The flags, and the value of a parameter that may be left out.
std::wstring ParameterFlags(const PARAMDESC& parameter) {
    constexpr USHORT kDefault = PARAMFLAG_FIN | PARAMFLAG_FHASDEFAULT | PARAMFLAG_FOPT;
    const USHORT flags = parameter.wParamFlags;
    if ((flags & PARAMFLAG_FHASDEFAULT) == 0 || (flags & ~kDefault) != 0) return FlagsText(flags);
    const VARIANT& value = parameter.pparamdescex->varDefaultValue;
    switch (V_VT(&value)) {
        case VT_BSTR:
            return L"[in=\"" + std::wstring(V_BSTR(&value)) + L"\"] ";
        case VT_I4:
            return L"[in=" + std::to_wstring(V_I4(&value)) + L"] ";
        case VT_BOOL:
            return L"[in=" + std::to_wstring(V_BOOL(&value)) + L"] ";
        default:
            return L"[in=type " + std::to_wstring(V_VT(&value)) + L"] ";
    }
}

std::wstring MethodText(ITypeInfo& type, const FUNCDESC& function) {
    BSTR names[20] = {};
    UINT count = 0;
    EXPECT_THAT(type.GetNames(function.memid, names, 20, &count), IsOk());
    EXPECT_EQ(static_cast<UINT>(function.cParams) + 1, count);
    std::wstring text = TakeText(names[0]) + L"(";
    for (SHORT index = 0; index < function.cParams; ++index) {
        const ELEMDESC& parameter = function.lprgelemdescParam[index];
        if (index > 0) text += L", ";
        text += ParameterFlags(parameter.paramdesc) + TypeText(type, parameter.tdesc);
        text += L" " + TakeText(names[index + 1]);
    }
    return text + L")";
}

class TypeLibraryTest : public testing::Test {
protected:
    // Nothing is registered for this: the library is read from the DLL.
    TypeLibraryTest() {
        ITypeLib* library = nullptr;
        EXPECT_THAT(
            LoadTypeLibEx(Wide(ProgramFolder() + "DepotIntr.dll").c_str(), REGKIND_NONE, &library),
            IsOk());
        library_.reset(library);
    }

    Com<ITypeInfo> Find(REFGUID id) const {
        ITypeInfo* found = nullptr;
        EXPECT_THAT(library_->GetTypeInfoOfGuid(id, &found), IsOk());
        return Com<ITypeInfo>(found);
    }

    Com<ITypeInfo> Find(const wchar_t* name) const {
        std::wstring text(name);
        ITypeInfo* found = nullptr;
        MEMBERID member = 0;
        USHORT count = 1;
        EXPECT_THAT(library_->FindName(text.data(), 0, &found, &member, &count), IsOk());
        EXPECT_EQ(1, count) << "no type of this name";
        return Com<ITypeInfo>(found);
    }

    // The half of the dual interface that native clients call.
    Com<ITypeInfo> Vtable(REFIID interfaceId = IID_IDepotIntrApi) const {
        const Com<ITypeInfo> dispatch = Find(interfaceId);
        HREFTYPE reference = 0;
        EXPECT_THAT(dispatch->GetRefTypeOfImplType(static_cast<UINT>(-1), &reference), IsOk());
        ITypeInfo* vtable = nullptr;
        EXPECT_THAT(dispatch->GetRefTypeInfo(reference, &vtable), IsOk());
        return Com<ITypeInfo>(vtable);
    }

    static TYPEATTR Attributes(ITypeInfo& type) {
        TYPEATTR* attributes = nullptr;
        EXPECT_THAT(type.GetTypeAttr(&attributes), IsOk());
        const TYPEATTR copy = *attributes;
        type.ReleaseTypeAttr(attributes);
        return copy;
    }

    // Checks a method, which is the `number`-th of all, and returns its identifier.
    static MEMBERID ExpectMethod(ITypeInfo& vtable, UINT index, const std::wstring& text,
                                 UINT number) {
        FUNCDESC* function = nullptr;
        EXPECT_THAT(vtable.GetFuncDesc(index, &function), IsOk());
        EXPECT_EQ(text, MethodText(vtable, *function));
        const MEMBERID member = function->memid;
        EXPECT_EQ(static_cast<MEMBERID>(number + 1), member);
        // Three slots of IUnknown and four of IDispatch come first.
        EXPECT_EQ(static_cast<SHORT>((7 + number) * sizeof(void*)), function->oVft);
        EXPECT_EQ(VT_HRESULT, function->elemdescFunc.tdesc.vt);
        EXPECT_EQ(INVOKE_FUNC, function->invkind);
        EXPECT_EQ(FUNC_PUREVIRTUAL, function->funckind);
        EXPECT_EQ(CC_STDCALL, function->callconv);
        const bool hasOptional = text.find(L"optional") != std::wstring::npos;
        EXPECT_EQ(hasOptional ? 1 : 0, function->cParamsOpt);
        vtable.ReleaseFuncDesc(function);
        return member;
    }

    void ExpectEnumeration(const wchar_t* name, std::vector<std::pair<std::wstring, long>> values) {
        const Com<ITypeInfo> type = Find(name);
        EXPECT_EQ(TKIND_ENUM, Attributes(*type).typekind);
        ASSERT_EQ(values.size(), Attributes(*type).cVars);
        for (UINT index = 0; index < values.size(); ++index) {
            VARDESC* variable = nullptr;
            ASSERT_THAT(type->GetVarDesc(index, &variable), IsOk());
            EXPECT_EQ(values[index].first, NameOf(*type, variable->memid));
            EXPECT_EQ(values[index].second, V_I4(variable->lpvarValue));
            type->ReleaseVarDesc(variable);
        }
    }

    Com<ITypeLib> library_;
};

TEST_F(TypeLibraryTest, LibraryHasItsNameVersionAndHelp) {
    BSTR name = nullptr;
    BSTR help = nullptr;
    ASSERT_THAT(library_->GetDocumentation(-1, &name, &help, nullptr, nullptr), IsOk());
    EXPECT_EQ(L"DepotIntrLib", TakeText(name));
    EXPECT_EQ(L"DepotIntr 1.0 Type Library", TakeText(help));
    TLIBATTR* attributes = nullptr;
    ASSERT_THAT(library_->GetLibAttr(&attributes), IsOk());
    EXPECT_TRUE(IsEqualGUID(LIBID_DepotIntrLib, attributes->guid));
    EXPECT_EQ(1, attributes->wMajorVerNum);
    EXPECT_EQ(0, attributes->wMinorVerNum);
    EXPECT_EQ(SYS_WIN64, attributes->syskind);
    library_->ReleaseTLibAttr(attributes);
    EXPECT_EQ(10u, library_->GetTypeInfoCount());
}

TEST_F(TypeLibraryTest, HandleIsAnAliasOfLong) {
    const Com<ITypeInfo> alias = Find(L"LONG_PTR");
    const TYPEATTR attributes = Attributes(*alias);
    EXPECT_EQ(TKIND_ALIAS, attributes.typekind);
    EXPECT_EQ(VT_I4, attributes.tdescAlias.vt);
}

TEST_F(TypeLibraryTest, EnumerationsHaveTheirValues) {
    ExpectEnumeration(L"APP_TYPE", {{L"APP_SKEIN", 1}, {L"APP_KICKOFF", 2}});
    ExpectEnumeration(L"BROWSE_TYPE", {{L"PROMPT_OPEN", 1}, {L"PROMPT_SAVEAS", 2}});
    ExpectEnumeration(
        L"TEXT_ENCODING",
        {{L"TEXT_AS_IT_IS", 0}, {L"TEXT_ANSI", 1}, {L"TEXT_UTF8", 2}, {L"TEXT_UTF16", 3}});
    ExpectEnumeration(L"FIND_WHAT", {{L"FIND_FILES", 0}, {L"FIND_FOLDERS", 1}, {L"FIND_BOTH", 2}});
}

TEST_F(TypeLibraryTest, InterfaceIsDualAutomationAndNonextensible) {
    const Com<ITypeInfo> dispatch = Find(IID_IDepotIntrApi);
    EXPECT_EQ(L"IDepotIntrApi", NameOf(*dispatch));
    EXPECT_EQ(L"IDepotIntrApi Interface", HelpOf(*dispatch));
    const WORD flags = Attributes(*dispatch).wTypeFlags;
    EXPECT_NE(0, flags & TYPEFLAG_FDUAL);
    EXPECT_NE(0, flags & TYPEFLAG_FNONEXTENSIBLE);
    EXPECT_EQ(TKIND_DISPATCH, Attributes(*dispatch).typekind);
    const Com<ITypeInfo> vtable = Vtable();
    EXPECT_NE(0, Attributes(*vtable).wTypeFlags & TYPEFLAG_FOLEAUTOMATION);
    EXPECT_EQ(TKIND_INTERFACE, Attributes(*vtable).typekind);
}

TEST_F(TypeLibraryTest, SecondInterfaceIsLikeTheFirstAndExtendsIt) {
    const Com<ITypeInfo> dispatch = Find(IID_IDepotIntrApi2);
    EXPECT_EQ(L"IDepotIntrApi2", NameOf(*dispatch));
    EXPECT_EQ(L"IDepotIntrApi2 Interface", HelpOf(*dispatch));
    const WORD flags = Attributes(*Find(IID_IDepotIntrApi)).wTypeFlags;
    EXPECT_EQ(flags, Attributes(*dispatch).wTypeFlags);
    const Com<ITypeInfo> vtable = Vtable(IID_IDepotIntrApi2);
    EXPECT_EQ(Attributes(*Vtable()).wTypeFlags, Attributes(*vtable).wTypeFlags);
    HREFTYPE reference = 0;
    ASSERT_THAT(vtable->GetRefTypeOfImplType(0, &reference), IsOk());
    EXPECT_EQ(L"IDepotIntrApi", ReferencedName(*vtable, reference));
}

TEST_F(TypeLibraryTest, InterfaceDerivesFromIDispatch) {
    const Com<ITypeInfo> vtable = Vtable();
    HREFTYPE reference = 0;
    ASSERT_THAT(vtable->GetRefTypeOfImplType(0, &reference), IsOk());
    EXPECT_EQ(L"IDispatch", ReferencedName(*vtable, reference));
}

TEST_F(TypeLibraryTest, MethodsHaveTheirSlotsIdentifiersAndParameters) {
    const Com<ITypeInfo> vtable = Vtable();
    ASSERT_EQ(std::size(kMethods), Attributes(*vtable).cFuncs);
    for (UINT index = 0; index < std::size(kMethods); ++index) {
        const MEMBERID member = ExpectMethod(*vtable, index, kMethods[index], index);
        EXPECT_EQ(L"method " + NameOf(*vtable, member), HelpOf(*vtable, member));
    }
}

TEST_F(TypeLibraryTest, NewMethodsGoOnBehindTheFirstOnes) {
    const Com<ITypeInfo> vtable = Vtable(IID_IDepotIntrApi2);
    ASSERT_EQ(std::size(kNewMethods), Attributes(*vtable).cFuncs);
    for (UINT index = 0; index < std::size(kNewMethods); ++index) {
        const UINT number = static_cast<UINT>(std::size(kMethods)) + index;
        const MEMBERID member = ExpectMethod(*vtable, index, kNewMethods[index].text, number);
        EXPECT_EQ(kNewMethods[index].help, HelpOf(*vtable, member));
    }
}

TEST_F(TypeLibraryTest, CoclassOffersTheInterfaceByDefault) {
    const Com<ITypeInfo> coclass = Find(CLSID_DepotIntrApi);
    EXPECT_EQ(L"DepotIntrApi", NameOf(*coclass));
    EXPECT_EQ(L"DepotIntrApi Class", HelpOf(*coclass));
    EXPECT_NE(0, Attributes(*coclass).wTypeFlags & TYPEFLAG_FCANCREATE);
    ASSERT_EQ(2, Attributes(*coclass).cImplTypes);
    INT flags = 0;
    ASSERT_THAT(coclass->GetImplTypeFlags(0, &flags), IsOk());
    EXPECT_EQ(IMPLTYPEFLAG_FDEFAULT, flags);
    HREFTYPE reference = 0;
    ASSERT_THAT(coclass->GetRefTypeOfImplType(0, &reference), IsOk());
    EXPECT_EQ(L"IDepotIntrApi", ReferencedName(*coclass, reference));
    ASSERT_THAT(coclass->GetImplTypeFlags(1, &flags), IsOk());
    EXPECT_EQ(0, flags);
    ASSERT_THAT(coclass->GetRefTypeOfImplType(1, &reference), IsOk());
    EXPECT_EQ(L"IDepotIntrApi2", ReferencedName(*coclass, reference));
}

using GetTypeInfoTest = ComponentTest;

TEST_F(GetTypeInfoTest, ObjectDescribesItselfWithTheLibrary) {
    UINT count = 99;
    ASSERT_THAT(api_->GetTypeInfoCount(&count), IsOk());
    EXPECT_EQ(1u, count);
    ITypeInfo* type = nullptr;
    ASSERT_THAT(api_->GetTypeInfo(0, LOCALE_USER_DEFAULT, &type), IsOk());
    EXPECT_EQ(L"IDepotIntrApi2", NameOf(*Com<ITypeInfo>(type)));
}

TEST_F(GetTypeInfoTest, OtherIndexesAndMissingOutputsAreRefused) {
    ITypeInfo* type = reinterpret_cast<ITypeInfo*>(this);
    EXPECT_THAT(api_->GetTypeInfo(1, LOCALE_USER_DEFAULT, &type), Fails(DISP_E_BADINDEX));
    EXPECT_EQ(nullptr, type);
    EXPECT_THAT(api_->GetTypeInfo(0, LOCALE_USER_DEFAULT, nullptr), Fails(E_POINTER));
    EXPECT_THAT(api_->GetTypeInfoCount(nullptr), Fails(E_POINTER));
}

}  // namespace
}  // namespace depot::test
