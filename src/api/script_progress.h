// The object by which a script hears how far a transfer is, and may stop it.
#pragma once

#include "com/automation.h"
#include "fileops/transfer_progress.h"
// After the Windows headers.
#include <dispex.h>

namespace depot {

// Calls the object's method "Progress" by its name: with the number of files that are done, with
// that of all, and with the bytes that are done as a real number, which scripts can compute with. A
// method that returns False, or fails, stops the transfer; one that returns nothing does not.
class ScriptProgress {
public:
    // Takes nothing, an empty value or an object, each by value or as a script's variable.
    explicit ScriptProgress(const VARIANT& given);

    // Whether what was given can be used: an object has the method.
    bool IsUsable() const { return isUsable_; }

    // Null without an object. It must not outlive this one.
    TransferWatcher Watcher() const;

private:
    bool FindMethod();
    HRESULT Call(DISPPARAMS& parameters, VARIANT& result) const;
    bool GoesOn(const TransferProgress& progress) const;

    UniqueCom<IDispatch> object_;
    // Some script engines give the methods of their objects by this only; null where it is not
    // needed.
    UniqueCom<IDispatchEx> extended_;
    DISPID method_ = DISPID_UNKNOWN;
    bool isUsable_ = false;
};

}  // namespace depot
