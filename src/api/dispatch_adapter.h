// Late binding: the type library's own dispatch, made safe for 64-bit handles and scripts.
#pragma once

#include <mutex>
#include <vector>

#include "DepotIntr.h"
#include "com/automation.h"

namespace depot {

// Serves IDispatch of IDepotIntrApi2, which has the methods of IDepotIntrApi, from the type library
// in the DLL's resources.
//
// The library declares a session handle as a 32-bit alias, but the methods read and write handles
// of pointer size. Around the library's own dispatch the adapter therefore puts every handle, by
// value or by reference, into a slot of pointer size, and copies it back at the width of the
// client's variable. Variables of scripts (references to VARIANT) are accepted for texts and
// handles alike, and an unsigned result that fits a signed number comes back as one, which scripts
// can compute with. One adapter serves all objects and threads.
class DispatchAdapter {
public:
    static DispatchAdapter& Instance();

    HRESULT GetTypeInfo(UINT index, LCID locale, ITypeInfo** typeInfo) noexcept;
    HRESULT GetIDsOfNames(LPOLESTR* names, UINT nameCount, DISPID* ids) noexcept;
    HRESULT Invoke(IDepotIntrApi2* object, DISPID id, WORD flags, DISPPARAMS* parameters,
                   VARIANT* result, EXCEPINFO* exception, UINT* wrongArgument) noexcept;

    // Lets go of the type library. Called before the DLL is unloaded.
    void Release();

    // What a method does with one parameter, as far as the adapter minds.
    struct Parameter {
        enum class Kind { kOther, kHandle, kText } kind = Kind::kOther;
        bool byReference = false;
        bool in = false;
        bool out = false;
    };
    using Signature = std::vector<Parameter>;

    // For Instance only.
    DispatchAdapter() = default;

private:
    HRESULT Load();
    const Signature* SignatureOf(DISPID id) const;

    std::mutex lock_;
    UniqueCom<ITypeInfo> typeInfo_;
    std::vector<std::pair<DISPID, Signature>> signatures_;
};

}  // namespace depot
