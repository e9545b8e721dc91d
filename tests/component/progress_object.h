// An object of a script that hears how far a transfer is.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "component/component.h"

namespace depot::test {

// Lives where the test made it, whatever is released. What the object is called with goes into
// `calls`: files done, files in all, bytes done.
class ProgressObject : public IDispatch {
public:
    // Makes what each call returns; an empty VARIANT without it.
    std::function<HRESULT(VARIANT& result)> answer;
    std::vector<std::vector<double>> calls;
    bool hasMethod = true;

    // Not a single reference may be left.
    ~ProgressObject() { EXPECT_EQ(0, references_); }

    STDMETHODIMP QueryInterface(REFIID id, void** object) override {
        *object = IsEqualIID(id, IID_IUnknown) || IsEqualIID(id, IID_IDispatch) ? this : nullptr;
        if (*object != nullptr) AddRef();
        return *object != nullptr ? S_OK : E_NOINTERFACE;
    }
    STDMETHODIMP_(ULONG) AddRef() override { return static_cast<ULONG>(++references_); }
    STDMETHODIMP_(ULONG) Release() override { return static_cast<ULONG>(--references_); }
    STDMETHODIMP GetTypeInfoCount(UINT*) override { return E_NOTIMPL; }
    STDMETHODIMP GetTypeInfo(UINT, LCID, ITypeInfo**) override { return E_NOTIMPL; }
    STDMETHODIMP GetIDsOfNames(REFIID, LPOLESTR* names, UINT, LCID, DISPID* ids) override {
        const bool isKnown = hasMethod && std::wstring(names[0]) == L"Progress";
        ids[0] = isKnown ? kMethod : DISPID_UNKNOWN;
        return isKnown ? S_OK : DISP_E_UNKNOWNNAME;
    }
    STDMETHODIMP Invoke(DISPID id, REFIID, LCID, WORD flags, DISPPARAMS* given, VARIANT* result,
                        EXCEPINFO*, UINT*) override {
        EXPECT_EQ(kMethod, id);
        EXPECT_NE(0, flags & DISPATCH_METHOD);
        std::vector<double> numbers;
        for (UINT index = given->cArgs; index-- > 0;) {
            const VARIANT& value = given->rgvarg[index];
            numbers.push_back(V_VT(&value) == VT_R8 ? V_R8(&value) : V_I4(&value));
        }
        calls.push_back(numbers);
        return answer ? answer(*result) : S_OK;
    }

    VARIANT AsVariant() {
        VARIANT value = {};
        V_VT(&value) = VT_DISPATCH;
        V_DISPATCH(&value) = this;
        return value;
    }

private:
    static constexpr DISPID kMethod = 4711;
    int references_ = 0;
};

// What a caller passes that leaves an optional argument out.
inline VARIANT LeftOutArgument() {
    VARIANT value = {};
    V_VT(&value) = VT_ERROR;
    V_ERROR(&value) = DISP_E_PARAMNOTFOUND;
    return value;
}

// The texts of an array of variants; anything else fails the test.
inline std::vector<std::wstring> TextsOf(VARIANT& array) {
    std::vector<std::wstring> texts;
    EXPECT_EQ(VT_ARRAY | VT_VARIANT, V_VT(&array));
    if (V_VT(&array) != (VT_ARRAY | VT_VARIANT)) return texts;
    LONG first = -1, last = -2;
    EXPECT_THAT(SafeArrayGetLBound(V_ARRAY(&array), 1, &first), IsOk());
    EXPECT_THAT(SafeArrayGetUBound(V_ARRAY(&array), 1, &last), IsOk());
    EXPECT_EQ(0, first);
    for (LONG index = first; index <= last; ++index) {
        VARIANT element = {};
        EXPECT_THAT(SafeArrayGetElement(V_ARRAY(&array), &index, &element), IsOk());
        EXPECT_EQ(VT_BSTR, V_VT(&element));
        texts.emplace_back(V_BSTR(&element), SysStringLen(V_BSTR(&element)));
        VariantClear(&element);
    }
    VariantClear(&array);
    return texts;
}

}  // namespace depot::test
