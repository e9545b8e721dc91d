// The arguments of one late-bound call.
#pragma once

#include <vector>

#include "api/automation_text.h"
#include "api/dispatch_adapter.h"

namespace depot {

// Stands between the client's arguments and the type library's dispatch: handles and texts are
// passed in slots of this object, and outputs are stored in the client's variables afterwards.
// Arguments of other kinds are passed on as they are.
class DispatchArguments {
public:
    DispatchArguments(const DispatchAdapter::Signature& signature, const DISPPARAMS& given);

    // Fills the slots from the client's arguments. On failure `wrongArgument`, when given, tells
    // which of them could not be converted.
    HRESULT Prepare(UINT* wrongArgument);

    // The arguments to pass on; valid as long as this object.
    DISPPARAMS* Parameters() { return &passed_; }

    // Stores what the method put out into the client's variables.
    void StoreOutputs();

private:
    struct Slot {
        LONGLONG handle = 0;
        UniqueBstr text;
        BSTR rawText = nullptr;  // what the method sees: `text`, or its own output
    };

    const DispatchAdapter::Parameter& ParameterOf(UINT argument) const;
    HRESULT PrepareHandle(const DispatchAdapter::Parameter& parameter, UINT argument);
    HRESULT PrepareText(const DispatchAdapter::Parameter& parameter, UINT argument);
    void StoreHandle(UINT argument);
    void StoreText(UINT argument);

    const DispatchAdapter::Signature& signature_;
    const DISPPARAMS& given_;
    DISPPARAMS passed_;
    std::vector<VARIANTARG> arguments_;
    std::vector<Slot> slots_;
};

}  // namespace depot
