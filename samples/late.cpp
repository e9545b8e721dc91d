// A client in C++ that knows nothing but the component's name: it calls by the names of the
// methods, as scripts do.
#include <windows.h>

#include <oleauto.h>

#include <cstdio>
#include <string>
#include <vector>

namespace {

// A VARIANT that frees itself.
class Value {
public:
    Value() { VariantInit(&value_); }
    explicit Value(long number) : Value() {
        value_.vt = VT_I4;
        value_.lVal = number;
    }
    explicit Value(const wchar_t* text) : Value() {
        value_.vt = VT_BSTR;
        value_.bstrVal = SysAllocString(text);
    }
    // A text that a method fills in.
    explicit Value(BSTR* output) : Value() {
        value_.vt = VT_BSTR | VT_BYREF;
        value_.pbstrVal = output;
    }
    ~Value() { VariantClear(&value_); }
    Value(const Value& other) : Value() {
        VARIANT source = other.value_;
        VariantCopy(&value_, &source);
    }
    Value& operator=(const Value&) = delete;

    VARIANT* operator&() { return &value_; }
    const wchar_t* text() const { return value_.vt == VT_BSTR ? value_.bstrVal : L""; }
    long number() const { return value_.vt == VT_I4 || value_.vt == VT_UI4 ? value_.lVal : 0; }

private:
    VARIANT value_;
};

class Component {
public:
    explicit Component(const wchar_t* name) {
        CLSID id = {};
        if (FAILED(CLSIDFromProgID(name, &id))) return;
        CoCreateInstance(id, nullptr, CLSCTX_INPROC_SERVER, IID_IDispatch,
                         reinterpret_cast<void**>(&object_));
    }
    ~Component() {
        if (object_ != nullptr) object_->Release();
    }
    Component(const Component&) = delete;
    Component& operator=(const Component&) = delete;

    bool exists() const { return object_ != nullptr; }

    // Arguments are handed over in reverse order.
    Value Call(const wchar_t* method, std::vector<Value> arguments) const {
        std::wstring name = method;
        wchar_t* names[] = {name.data()};
        DISPID id = DISPID_UNKNOWN;
        Value result;
        if (FAILED(object_->GetIDsOfNames(IID_NULL, names, 1, LOCALE_USER_DEFAULT, &id)))
            return result;
        std::vector<VARIANT> reversed;
        for (Value& argument : arguments) reversed.insert(reversed.begin(), *&argument);
        DISPPARAMS parameters = {reversed.data(), nullptr, static_cast<UINT>(reversed.size()), 0};
        object_->Invoke(id, IID_NULL, LOCALE_USER_DEFAULT, DISPATCH_METHOD, &parameters, &result,
                        nullptr, nullptr);
        return result;
    }

private:
    IDispatch* object_ = nullptr;
};

void Show(const Component& depots, long session, const wchar_t* section, const wchar_t* key) {
    BSTR value = nullptr;
    depots.Call(L"DPGetProfileString", {Value(session), Value(section), Value(key),
                                        Value(L"(not set)"), Value(&value), Value(260L)});
    std::wprintf(L"[%ls] %ls: {%ls}\n", section, key, value ? value : L"");
    SysFreeString(value);
}

int Run(const Component& depots) {
    const wchar_t profile[] = L"<Work>\\Sessions\\office.kre";
    const long session = depots.Call(L"DPInitialize", {}).number();
    std::wprintf(L"Default depot:  %ls\n",
                 depots.Call(L"DPGetDefaultDPPath", {Value(session)}).text());
    depots.Call(L"DPLoadFile", {Value(session), Value(profile)});
    Show(depots, session, L"PROFILE", L"Title");
    Show(depots, session, L"Host", L"Name");
    Show(depots, session, L"Keyboard", L"Language");
    const Value port = depots.Call(L"DPGetProfileInt",
                                   {Value(session), Value(L"Host"), Value(L"Port"), Value(23L)});
    std::wprintf(L"[Host] Port:    %ld\n", port.number());
    depots.Call(L"DPSetProfileString",
                {Value(session), Value(L"Notes"), Value(L"Late"), Value(L"written by name")});
    Show(depots, session, L"Notes", L"Late");
    depots.Call(L"DPUnInitialize", {Value(session)});
    std::wprintf(L"Session ended.\n");
    return 0;
}

}  // namespace

int main() {
    CoInitialize(nullptr);
    int result = 1;
    {
        const Component depots(L"DepotIntr.DepotIntrApi");
        if (depots.exists())
            result = Run(depots);
        else
            std::fprintf(stderr, "DepotIntr is not registered.\n");
    }
    CoUninitialize();
    return result;
}
