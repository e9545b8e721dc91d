// Calling the interface as an automation client does.
#pragma once

#include <initializer_list>
#include <vector>

#include "component/component.h"
#include "support/results.h"

namespace depot::test {

// A VARIANT that owns what it holds. Integers are VT_I4, as in scripts.
class Variant {
public:
    Variant() { VariantInit(&value_); }
    Variant(LONG number) : Variant() { Set(VT_I4), V_I4(&value_) = number; }
    Variant(int number) : Variant(LONG{number}) {}
    Variant(const wchar_t* text) : Variant() {
        Set(VT_BSTR), V_BSTR(&value_) = SysAllocString(text);
    }
    Variant(const std::string& text) : Variant(Wide(text).c_str()) {}
    ~Variant() { VariantClear(&value_); }
    Variant(const Variant& other) : Variant() {
        VariantCopy(&value_, const_cast<VARIANT*>(&other.value_));
    }
    Variant& operator=(const Variant&) = delete;

    // A variable that the callee may change.
    static Variant Reference(VARTYPE type, void* variable) {
        Variant reference;
        reference.Set(static_cast<VARTYPE>(type | VT_BYREF));
        V_BYREF(&reference.value_) = variable;
        return reference;
    }
    static Variant Reference(Variant& variable) { return Reference(VT_VARIANT, variable.get()); }

    // A value of another type, given as the raw bits of the union.
    static Variant Raw(VARTYPE type, LONGLONG bits) {
        Variant value;
        value.Set(type);
        V_I8(&value.value_) = bits;
        return value;
    }

    VARIANT* get() { return &value_; }
    VARTYPE Type() const { return V_VT(&value_); }
    LONG Number() const {
        EXPECT_EQ(VT_I4, Type());
        return V_I4(&value_);
    }
    std::wstring Text() const {
        EXPECT_EQ(VT_BSTR, Type());
        if (Type() != VT_BSTR) return L"(not a text)";
        return std::wstring(V_BSTR(&value_), SysStringLen(V_BSTR(&value_)));
    }

private:
    void Set(VARTYPE type) { V_VT(&value_) = type; }
    VARIANT value_;
};

// Calls an object's methods by their names.
class LateClient {
public:
    explicit LateClient(IDispatch& object) : object_(object) {}

    // Takes the arguments in their usual order.
    HRESULT Call(const wchar_t* name, std::initializer_list<Variant> arguments,
                 Variant* result = nullptr) {
        return Invoke(IdOf(name), arguments, {}, result);
    }

    // The last `named.size()` arguments are given by the identifiers in `named`.
    HRESULT Invoke(DISPID id, std::initializer_list<Variant> arguments, std::vector<DISPID> named,
                   Variant* result = nullptr) {
        std::vector<VARIANTARG> reversed;
        for (auto argument = arguments.end(); argument != arguments.begin();) {
            reversed.push_back(*const_cast<Variant&>(*--argument).get());
        }
        std::vector<DISPID> reversedNames(named.rbegin(), named.rend());
        DISPPARAMS parameters = {reversed.data(), reversedNames.data(),
                                 static_cast<UINT>(reversed.size()),
                                 static_cast<UINT>(reversedNames.size())};
        wrongArgument = 99;
        if (result != nullptr) VariantClear(result->get());
        return object_.Invoke(id, IID_NULL, LOCALE_USER_DEFAULT, DISPATCH_METHOD, &parameters,
                              result ? result->get() : nullptr, nullptr, &wrongArgument);
    }

    DISPID IdOf(const wchar_t* name) const {
        std::wstring text(name);
        LPOLESTR names[] = {text.data()};
        DISPID id = DISPID_UNKNOWN;
        EXPECT_THAT(object_.GetIDsOfNames(IID_NULL, names, 1, LOCALE_USER_DEFAULT, &id), IsOk())
            << name;
        return id;
    }

    UINT wrongArgument = 99;

private:
    IDispatch& object_;
};

}  // namespace depot::test
