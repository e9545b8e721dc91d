// The methods that let the user choose files.
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

STDMETHODIMP CDepotIntrApi::DPBrowseMultiSel(LONG_PTR, APP_TYPE, VARIANT_BOOL, VARIANT_BOOL, ULONG,
                                             LONG_PTR, BSTR* bstrFileList, SHORT) noexcept {
    return RefuseText(bstrFileList);
}

}  // namespace depot
