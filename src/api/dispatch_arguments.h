// The arguments of one late-bound call.
#pragma once

#include <vector>

#include "api/automation_text.h"
#include "api/dispatch_adapter.h"
#include "platform/not_copied.h"

namespace depot {

// An owned VARIANT, empty at first.
class UniqueVariant : NotCopied {
public:
    ~UniqueVariant() { VariantClear(&value_); }
    VARIANT* get() { return &value_; }

private:
    VARIANT value_ = {};
};

// Stands between the client's arguments and the type library's dispatch: handles and texts are
// passed in slots of this object, and outputs are stored in the client's variables afterwards.
// Arguments of other kinds are passed on as they are.
class DispatchArguments {
public:
    DispatchArguments(const DispatchAdapter::Signature& signature, const DISPPARAMS& given);

    // Fills the slots from the client's arguments. On failure `wrongArgument`, when given, is
    // the one that could not be converted.
    HRESULT Prepare(UINT* wrongArgument);

    // The arguments to pass on; valid as long as this object.
    DISPPARAMS* Parameters() { return &passed_; }

    // Stores what the method put out into the client's variables, whose former values are released
    // with this object. A call that failed stores nothing and leaves them as they were.
    void StoreOutputs();

private:
    struct Slot {
        LONGLONG handle = 0;
        UniqueVariant text;  // what the method sees: a BSTR, null for an output
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
