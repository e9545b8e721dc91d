// The second interface of the object, as clients get it.
#pragma once

#include "component/component.h"

namespace depot::test {

inline Com<IDepotIntrApi2> Api2Of(IDepotIntrApi& api) {
    void* found = nullptr;
    EXPECT_THAT(api.QueryInterface(IID_IDepotIntrApi2, &found), IsOk());
    return Com<IDepotIntrApi2>(static_cast<IDepotIntrApi2*>(found));
}

// A text that is passed by value.
class Bstr {
public:
    explicit Bstr(std::wstring_view text)
        : text_(SysAllocStringLen(text.data(), static_cast<UINT>(text.size()))) {}
    explicit Bstr(const std::string& text) : Bstr(Wide(text)) {}
    ~Bstr() { SysFreeString(text_); }
    Bstr(const Bstr&) = delete;
    Bstr& operator=(const Bstr&) = delete;

    operator BSTR() const { return text_; }

private:
    BSTR text_;
};

// The variable for a truth value, which a method has to replace.
class OutBool {
public:
    operator VARIANT_BOOL*() {
        value_ = kJunk;
        return &value_;
    }
    bool IsTrue() const { return value_ == VARIANT_TRUE; }
    bool IsFalse() const { return value_ == VARIANT_FALSE; }

private:
    static constexpr VARIANT_BOOL kJunk = 0x5A5A;
    VARIANT_BOOL value_ = kJunk;
};

// The last failure of a session, or of the thread for handle 0.
struct LastError {
    LONG code = -1;
    std::wstring text;
};
inline LastError LastErrorOf(IDepotIntrApi2& api, LONG_PTR handle) {
    LastError error;
    OutText text;
    EXPECT_THAT(api.LastErrorCode(handle, &error.code), IsOk());
    EXPECT_THAT(api.LastErrorText(handle, text), IsOk());
    error.text = text.Value();
    return error;
}

}  // namespace depot::test
