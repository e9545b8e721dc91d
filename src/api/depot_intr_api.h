// The one class that clients create.
#pragma once

#include "DepotIntr.h"
#include "platform/win32.h"

namespace depot {

// The automation interface. The object holds no state of its own: every method works on the session
// that its handle names. Reference counting and aggregation are the host's, which derives from this
// class.
//
// Shared by all methods: S_OK is success and S_FALSE every kind of failure, no exception gets out,
// the DLL's own activation context is current during the call, outputs are set on entry, and texts
// that are returned belong to the caller. A handle that names no live session is refused like a
// missing one.
class CDepotIntrApi : public IDepotIntrApi2 {
public:
    // Returns this object under `interfaceId`, which is IUnknown, IDispatch, IDepotIntrApi or
    // IDepotIntrApi2, with an added reference; E_NOINTERFACE otherwise.
    HRESULT InternalQueryInterface(REFIID interfaceId, void** object);

    // IDispatch, served from the type library that the DLL carries.
    STDMETHODIMP GetTypeInfoCount(UINT* count) noexcept override;
    STDMETHODIMP GetTypeInfo(UINT index, LCID locale, ITypeInfo** typeInfo) noexcept override;
    STDMETHODIMP GetIDsOfNames(REFIID reserved, LPOLESTR* names, UINT nameCount, LCID locale,
                               DISPID* ids) noexcept override;
    STDMETHODIMP Invoke(DISPID id, REFIID reserved, LCID locale, WORD flags, DISPPARAMS* parameters,
                        VARIANT* result, EXCEPINFO* exception,
                        UINT* wrongArgument) noexcept override;

    // IDepotIntrApi.
    STDMETHODIMP DPInitialize(LONG_PTR* plDPIntr) noexcept override;
    STDMETHODIMP DPBrowse(LONG_PTR lDPIntr, APP_TYPE appType, BROWSE_TYPE browseType,
                          VARIANT_BOOL bEdit, VARIANT_BOOL bPerformFileOP, ULONG nHelpTopicID,
                          LONG_PTR lpParentWnd, BSTR* bstrFilePath) noexcept override;
    STDMETHODIMP DPUnInitialize(LONG_PTR lDPIntr) noexcept override;
    STDMETHODIMP DPLoadFile(LONG_PTR* plDPIntr, BSTR* bstrFileToLoad) noexcept override;
    STDMETHODIMP DPGetProfileString(LONG_PTR lDPIntr, BSTR* bstrSectName, BSTR* bstrKeyName,
                                    BSTR* bstrDefVal, BSTR* bstrKeyVal,
                                    ULONG nSize) noexcept override;
    STDMETHODIMP DPGetProfileInt(LONG_PTR lDPIntr, BSTR* bstrSectName, BSTR* bstrKeyName,
                                 ULONG nDefVal, ULONG* pnKeyVal) noexcept override;
    STDMETHODIMP DPGetDepotDisplayPath(LONG_PTR lDPIntr, BSTR* bstrFileName,
                                       BSTR* bstrDspName) noexcept override;
    STDMETHODIMP DPSetProfileString(LONG_PTR lDPIntr, BSTR* bstrSectName, BSTR* bstrKeyName,
                                    BSTR* bstValue) noexcept override;
    STDMETHODIMP DPPublishSkesDepFiles(LONG_PTR lDPIntr) noexcept override;
    STDMETHODIMP DPBrowseMultiSel(LONG_PTR lDPIntr, APP_TYPE appType, VARIANT_BOOL bEdit,
                                  VARIANT_BOOL bPerformFileOP, ULONG nHelpTopicID,
                                  LONG_PTR lpParentWnd, BSTR* bstrFileList,
                                  SHORT nSize) noexcept override;
    STDMETHODIMP DPRenameFile(LONG_PTR lDPIntr, BSTR* bstrOldFileName,
                              BSTR* bstrNewFileName) noexcept override;
    STDMETHODIMP DPDeleteFile(LONG_PTR lDPIntr, BSTR* bstrFileName) noexcept override;
    STDMETHODIMP DPCopyFileToLocalFS(LONG_PTR lDPIntr, BSTR* bstrSrcFileName, BSTR* bstrDstFileName,
                                     VARIANT_BOOL vbFailIfExists) noexcept override;
    STDMETHODIMP DPFileExists(LONG_PTR lDPIntr, BSTR* bstrFileName) noexcept override;
    STDMETHODIMP DPFlushFile(LONG_PTR lDPIntr) noexcept override;
    STDMETHODIMP DPPathConvertDPtoFS(BSTR* bstrDPFilePath, BSTR* bstrFSFilePath) noexcept override;
    STDMETHODIMP DPFindInit(LONG_PTR* plDPIntr, BSTR* bstrFilePath, BSTR* bstrFileExt,
                            APP_TYPE appType, LONG* nCount) noexcept override;
    STDMETHODIMP DPFindNext(LONG_PTR lDPIntr, LONG lCount, BSTR* bstrFileName) noexcept override;
    STDMETHODIMP DPGetPathFromDisplayName(LONG_PTR lDPIntr, BSTR* bstrDspName,
                                          BSTR* bstrDPPath) noexcept override;
    STDMETHODIMP DPGetDefaultDPPath(LONG_PTR lDPIntr, BSTR* bstrDPPath) noexcept override;
    STDMETHODIMP DPIsPathWriteAble(LONG_PTR lDPIntr, BSTR* bstrFilePath) noexcept override;
    STDMETHODIMP DPSetSelItemPath(LONG_PTR lDPIntr, BSTR* bstrFilePath) noexcept override;
    STDMETHODIMP DPMakeCopyFromSrcFile(LONG_PTR lDPIntr, BSTR* bstrSrcFile,
                                       BSTR* bstrDstFile) noexcept override;

    // IDepotIntrApi2.
    STDMETHODIMP LastErrorCode(LONG_PTR lDPIntr, LONG* plCode) noexcept override;
    STDMETHODIMP LastErrorText(LONG_PTR lDPIntr, BSTR* pbstrText) noexcept override;
    STDMETHODIMP Quiet(LONG_PTR lDPIntr, VARIANT_BOOL bQuiet,
                       VARIANT_BOOL* pbBefore) noexcept override;
    STDMETHODIMP Exists(LONG_PTR lDPIntr, BSTR bstrPath, VARIANT_BOOL* pbExists) noexcept override;
    STDMETHODIMP IsWritable(LONG_PTR lDPIntr, BSTR bstrPath,
                            VARIANT_BOOL* pbWritable) noexcept override;
    STDMETHODIMP ReadText(LONG_PTR lDPIntr, BSTR bstrFile, BSTR* pbstrText) noexcept override;
    STDMETHODIMP WriteText(LONG_PTR lDPIntr, BSTR bstrFile, BSTR bstrText, TEXT_ENCODING encoding,
                           VARIANT_BOOL* pbDone) noexcept override;
    STDMETHODIMP Find(LONG_PTR lDPIntr, BSTR bstrFolder, BSTR bstrExtensions, FIND_WHAT what,
                      VARIANT* pPaths) noexcept override;
    STDMETHODIMP ChosenFiles(LONG_PTR lDPIntr, VARIANT* pPaths) noexcept override;
    STDMETHODIMP Copy(LONG_PTR lDPIntr, BSTR bstrFrom, BSTR bstrTo, VARIANT_BOOL bMayExist,
                      VARIANT progress, VARIANT_BOOL* pbDone) noexcept override;
    STDMETHODIMP Move(LONG_PTR lDPIntr, BSTR bstrFrom, BSTR bstrTo, VARIANT_BOOL bMayExist,
                      VARIANT progress, VARIANT_BOOL* pbDone) noexcept override;
    STDMETHODIMP MakeFolder(LONG_PTR lDPIntr, BSTR bstrFolder, VARIANT_BOOL bMayExist,
                            VARIANT_BOOL* pbDone) noexcept override;
    STDMETHODIMP Depots(LONG_PTR lDPIntr, IDepotInfos** ppDepots) noexcept override;

protected:
    CDepotIntrApi() = default;
    // Clients end the object through Release only, which the host's derived classes implement.
    ~CDepotIntrApi() = default;
};

}  // namespace depot
