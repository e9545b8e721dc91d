// The methods that change, list, browse and publish files.
#include "api/depot_intr_api.h"

namespace depot {
namespace {

HRESULT RefuseText(BSTR* output) {
    if (output != nullptr) *output = nullptr;
    return S_FALSE;
}

}  // namespace

STDMETHODIMP CDepotIntrApi::DPBrowse(LONG_PTR, APP_TYPE, BROWSE_TYPE, VARIANT_BOOL, VARIANT_BOOL,
                                     ULONG, LONG_PTR, BSTR* bstrFilePath) noexcept {
    return RefuseText(bstrFilePath);
}

STDMETHODIMP CDepotIntrApi::DPPublishSkesDepFiles(LONG_PTR) noexcept {
    return S_FALSE;
}

STDMETHODIMP CDepotIntrApi::DPBrowseMultiSel(LONG_PTR, APP_TYPE, VARIANT_BOOL, VARIANT_BOOL, ULONG,
                                             LONG_PTR, BSTR* bstrFileList, SHORT) noexcept {
    return RefuseText(bstrFileList);
}

STDMETHODIMP CDepotIntrApi::DPRenameFile(LONG_PTR, BSTR*, BSTR*) noexcept {
    return S_FALSE;
}

STDMETHODIMP CDepotIntrApi::DPDeleteFile(LONG_PTR, BSTR*) noexcept {
    return S_FALSE;
}

STDMETHODIMP CDepotIntrApi::DPCopyFileToLocalFS(LONG_PTR, BSTR*, BSTR*, VARIANT_BOOL) noexcept {
    return S_FALSE;
}

STDMETHODIMP CDepotIntrApi::DPMakeCopyFromSrcFile(LONG_PTR, BSTR*, BSTR*) noexcept {
    return S_FALSE;
}

}  // namespace depot
