// Late-bound calls with arguments of any type, number and contents: nothing crashes, hangs, or is
// written beside a variable, and the object works afterwards.
//
// DEPOTINTR_FUZZ_ROUNDS is how many calls are made instead of those of every day; --gtest_shuffle
// gives each run others, by the seed that the program prints.
#include <cstdlib>
#include <cstring>
#include <deque>

#include "component/late_calls.h"
#include "component/scripted_dialog.h"
#include "support/box_log.h"
#include "support/current_folder.h"
#include "support/random_text.h"

namespace depot::test {
namespace {

int Rounds() {
    constexpr int kEveryDay = 1500;
    const char* const given = std::getenv("DEPOTINTR_FUZZ_ROUNDS");
    return given != nullptr ? std::atoi(given) : kEveryDay;
}

// The types of automation, each with the bytes of a variable.
struct Kind {
    VARTYPE type;
    std::size_t bytes;
};
constexpr Kind kKinds[] = {{VT_I1, 1},    {VT_UI1, 1},      {VT_I2, 2},      {VT_UI2, 2},
                           {VT_BOOL, 2},  {VT_I4, 4},       {VT_UI4, 4},     {VT_INT, 4},
                           {VT_UINT, 4},  {VT_ERROR, 4},    {VT_R4, 4},      {VT_I8, 8},
                           {VT_UI8, 8},   {VT_R8, 8},       {VT_DATE, 8},    {VT_CY, 8},
                           {VT_BSTR, 8},  {VT_DISPATCH, 8}, {VT_UNKNOWN, 8}, {VT_VARIANT, 24},
                           {VT_EMPTY, 8}, {VT_NULL, 8},     {VT_DECIMAL, 16}};

// A variable, and bytes around it that nothing may change.
class Variable {
public:
    Variable() { std::memset(bytes_, kGuard, sizeof(bytes_)); }

    void* Place(std::size_t size) {
        size_ = size;
        std::memset(bytes_ + kBefore, 0, size);
        return bytes_ + kBefore;
    }
    bool GuardsAreIntact() const {
        for (std::size_t at = 0; at < sizeof(bytes_); ++at) {
            const bool isInside = at >= kBefore && at < kBefore + size_;
            if (!isInside && bytes_[at] != kGuard) return false;
        }
        return true;
    }

private:
    static constexpr unsigned char kGuard = 0xA5;
    static constexpr std::size_t kBefore = 16;
    alignas(16) unsigned char bytes_[64];
    std::size_t size_ = 0;
};

// The arguments of one call with all that they refer to.
class Arguments {
public:
    Arguments(RandomTexts& random, IUnknown& object, const std::vector<std::string>& texts,
              LONG_PTR session)
        : random_(random), object_(object), texts_(texts), session_(session) {}
    ~Arguments() {
        for (BSTR* const text : textVariables_) SysFreeString(*text);
        for (IUnknown** const pointer : objectVariables_) Release(*pointer);
        for (SAFEARRAY** const array : arrayVariables_) SafeArrayDestroy(*array);
        for (VARIANT* const variant : variants_) VariantClear(variant);
        for (VARIANT& argument : list_) VariantClear(&argument);
    }
    Arguments(const Arguments&) = delete;
    Arguments& operator=(const Arguments&) = delete;

    void Make(std::size_t count) {
        for (; list_.size() < count;) {
            VariantInit(&list_.emplace_back());
            Fill(list_.back(), 0);
        }
    }
    std::vector<VARIANT>& List() { return list_; }
    bool GuardsAreIntact() const {
        for (const Variable& variable : variables_) {
            if (!variable.GuardsAreIntact()) return false;
        }
        return true;
    }
    // The numbers that variables hold by now: a new session's handle may be among them.
    std::vector<LONG_PTR> Numbers() const {
        std::vector<LONG_PTR> numbers;
        for (const LONG* const four : fours_) numbers.push_back(*four);
        for (const LONGLONG* const eight : eights_) numbers.push_back(*eight);
        for (const VARIANT* const variant : variants_) {
            if (V_VT(variant) == VT_I4) numbers.push_back(V_I4(variant));
            if (V_VT(variant) == VT_I8) numbers.push_back(V_I8(variant));
        }
        return numbers;
    }

private:
    static void Release(IUnknown* object) {
        if (object != nullptr) object->Release();
    }

    LONGLONG Number() {
        switch (random_.Below(5)) {
            case 0:
                return session_;
            case 1:
                return static_cast<LONGLONG>(random_.Below(12)) - 2;
            case 2:
                return static_cast<LONGLONG>(random_.Below(SIZE_MAX)) *
                       static_cast<LONGLONG>(0x100000001);
            case 3:
                return session_ + static_cast<LONGLONG>(random_.Below(64)) - 32;
            default:
                return 260;
        }
    }

    BSTR Text() {
        constexpr std::size_t kHuge = 300000;
        switch (random_.Below(16)) {
            case 0:
                return nullptr;
            case 1:
                return SysAllocStringByteLen("odd", 3);
            case 2: {
                const std::wstring units(random_.Below(40), static_cast<wchar_t>(0xD800));
                return SysAllocStringLen(units.data(), static_cast<UINT>(units.size()));
            }
            case 3: {
                const std::wstring huge(random_.Below(kHuge), L'x');
                return SysAllocStringLen(huge.data(), static_cast<UINT>(huge.size()));
            }
            case 4: {
                const std::wstring nul = L"S" + std::wstring(2, L'\0') + L"K";
                return SysAllocStringLen(nul.data(), static_cast<UINT>(nul.size()));
            }
            case 5:
                return SysAllocString(Wide(random_.Text(30, "ab %$<>=;,\"'\t")).c_str());
            default:
                return SysAllocString(Wide(texts_[random_.Below(texts_.size())]).c_str());
        }
    }

    IUnknown* Object() {
        if (random_.Below(2) == 0) return nullptr;
        object_.AddRef();
        return &object_;
    }

    SAFEARRAY* Array(VARTYPE type) {
        SAFEARRAYBOUND bounds[2] = {{static_cast<ULONG>(random_.Below(4)), 0},
                                    {static_cast<ULONG>(random_.Below(3)), -1}};
        if (type == VT_EMPTY || type == VT_NULL || random_.Below(8) == 0) return nullptr;
        return SafeArrayCreate(type, random_.Below(3) == 0 ? 2 : 1, bounds);
    }

    void Fill(VARIANT& value, int depth) {
        const Kind kind = random_.Below(2) == 0 ? kKinds[random_.Below(2) == 0 ? 16 : 11]
                                                : kKinds[random_.Below(std::size(kKinds))];
        switch (random_.Below(8)) {
            case 0:
                return FillArray(value, kind);
            case 1:
            case 2:
            case 3:
                return FillReference(value, kind, depth);
            case 4:
                // A parameter that the caller leaves out.
                V_VT(&value) = VT_ERROR;
                V_ERROR(&value) = DISP_E_PARAMNOTFOUND;
                return;
            default:
                return FillValue(value, kind);
        }
    }

    void FillValue(VARIANT& value, const Kind& kind) {
        if (kind.type == VT_VARIANT) return;  // there are references to them only
        if (kind.type != VT_DECIMAL) V_I8(&value) = Number();
        if (kind.type == VT_BSTR) V_BSTR(&value) = Text();
        if (kind.type == VT_DISPATCH || kind.type == VT_UNKNOWN) V_UNKNOWN(&value) = Object();
        V_VT(&value) = kind.type;
    }

    void FillArray(VARIANT& value, const Kind& kind) {
        SAFEARRAY* const array = Array(kind.type);
        if (array == nullptr) return;
        V_VT(&value) = static_cast<VARTYPE>(VT_ARRAY | kind.type);
        V_ARRAY(&value) = array;
        if (random_.Below(2) == 0) return;
        arrays_.push_back(array);
        arrayVariables_.push_back(&arrays_.back());
        V_VT(&value) = static_cast<VARTYPE>(VT_ARRAY | VT_BYREF | kind.type);
        V_ARRAYREF(&value) = &arrays_.back();
    }

    void FillReference(VARIANT& value, const Kind& kind, int depth) {
        if (kind.type == VT_EMPTY || kind.type == VT_NULL) return;
        void* const place = variables_.emplace_back().Place(kind.bytes);
        V_VT(&value) = static_cast<VARTYPE>(VT_BYREF | kind.type);
        V_BYREF(&value) = place;
        switch (kind.type) {
            case VT_BSTR:
                *static_cast<BSTR*>(place) = Text();
                textVariables_.push_back(static_cast<BSTR*>(place));
                return;
            case VT_DISPATCH:
            case VT_UNKNOWN:
                *static_cast<IUnknown**>(place) = Object();
                objectVariables_.push_back(static_cast<IUnknown**>(place));
                return;
            case VT_VARIANT:
                VariantInit(static_cast<VARIANT*>(place));
                variants_.push_back(static_cast<VARIANT*>(place));
                if (depth == 0) Fill(*static_cast<VARIANT*>(place), depth + 1);
                return;
            case VT_DECIMAL:
                return;
            default:
                break;
        }
        const LONGLONG number = Number();
        std::memcpy(place, &number, kind.bytes);
        if (kind.bytes == sizeof(LONG)) fours_.push_back(static_cast<LONG*>(place));
        if (kind.bytes == sizeof(LONGLONG)) eights_.push_back(static_cast<LONGLONG*>(place));
    }

    RandomTexts& random_;
    IUnknown& object_;
    const std::vector<std::string>& texts_;
    const LONG_PTR session_;
    std::vector<VARIANT> list_;
    std::deque<Variable> variables_;
    std::deque<SAFEARRAY*> arrays_;
    std::vector<BSTR*> textVariables_;
    std::vector<IUnknown**> objectVariables_;
    std::vector<SAFEARRAY**> arrayVariables_;
    std::vector<VARIANT*> variants_;
    std::vector<LONG*> fours_;
    std::vector<LONGLONG*> eights_;
};

class HostileCallsTest : public ComponentTest {
protected:
    HostileCallsTest() {
        Refresh();
        // Nothing here leads out of the depot.
        texts_ = {"<A>\\a.kra",
                  "<A>\\b.kra",
                  "<A>\\Sub\\c.kra",
                  "<A>\\Sub",
                  "<A>\\none.kra",
                  "a.kra",
                  "<A>",
                  "<A>\\*.kra",
                  "<Depot A>\\a.kra",
                  "S",
                  "K",
                  "",
                  "((3)%d%s",
                  ".kra;.kre",
                  folder_.At("out"),
                  folder_.At("A\\a.kra")};
    }

    // The depot and a session as they were at first.
    void Refresh() {
        folder_.MakeFolder("A\\Sub");
        folder_.MakeFolder("out");
        folder_.MakeFile("A\\a.kra",
                         "[S]\r\nK=1\r\n[Skein]\r\nCount=1\r\n[Clients]\r\nC1=b.kra\r\n");
        folder_.MakeFile("A\\b.kra", "b");
        if (session_ != 0) api_->DPUnInitialize(session_);
        session_ = 0;
        EXPECT_THAT(api_->DPInitialize(&session_), IsOk());
        EXPECT_THAT(api_->DPLoadFile(&session_, Text("<A>\\a.kra")), IsOk());
    }

    std::vector<DISPID> Names(std::size_t count) {
        static const DISPID kNames[] = {0, 1, 2, 3, 4, 5, 17, -1, DISPID_PROPERTYPUT, 0x7FFFFFFF};
        std::vector<DISPID> names;
        if (random_.Below(4) != 0) return names;
        for (std::size_t some = random_.Below(count + 1); some > 0; --some) {
            names.push_back(kNames[random_.Below(std::size(kNames))]);
        }
        return names;
    }

    DISPID Identifier() {
        constexpr DISPID kMethods = 36;
        if (random_.Below(30) == 0) return static_cast<DISPID>(random_.Below(SIZE_MAX));
        return static_cast<DISPID>(1 + random_.Below(kMethods));
    }

    void CallOnce() {
        Arguments arguments(random_, *api_.get(), texts_, session_);
        arguments.Make(random_.Below(7));
        std::vector<DISPID> names = Names(arguments.List().size());
        DISPPARAMS parameters = {arguments.List().data(), names.data(),
                                 static_cast<UINT>(arguments.List().size()),
                                 static_cast<UINT>(names.size())};
        static const WORD kFlags[] = {DISPATCH_METHOD, DISPATCH_METHOD | DISPATCH_PROPERTYGET,
                                      DISPATCH_METHOD, DISPATCH_PROPERTYPUT,
                                      0xFFFF,          0};
        Variant result;
        EXCEPINFO exception = {};
        UINT wrong = 0;
        const DISPID id = Identifier();
        static_cast<void>(api_->Invoke(id, IID_NULL, static_cast<LCID>(random_.Below(0x10000)),
                                       kFlags[random_.Below(std::size(kFlags))], &parameters,
                                       random_.Below(4) == 0 ? nullptr : result.get(),
                                       random_.Below(2) == 0 ? nullptr : &exception,
                                       random_.Below(2) == 0 ? nullptr : &wrong));
        EXPECT_TRUE(arguments.GuardsAreIntact()) << "method " << id;
        SysFreeString(exception.bstrSource);
        SysFreeString(exception.bstrDescription);
        SysFreeString(exception.bstrHelpFile);
        for (const LONG_PTR number : arguments.Numbers()) EndSession(number);
        if (result.Type() == VT_I4) EndSession(V_I4(result.get()));
        if (result.Type() == VT_I8) EndSession(V_I8(result.get()));
    }

    // Ends a session that a call began; any other number is refused.
    void EndSession(LONG_PTR handle) const {
        if (static_cast<LONG>(handle) != static_cast<LONG>(session_)) api_->DPUnInitialize(handle);
    }

    void AskForInterfaces() {
        IID id = IID_NULL;
        const std::string bytes = random_.Bytes(sizeof(id));
        std::memcpy(&id, bytes.data(), bytes.size());
        if (random_.Below(3) == 0) id = IID_IDispatch;
        void* object = this;
        const HRESULT got = api_->QueryInterface(id, &object);
        EXPECT_EQ(SUCCEEDED(got), object != nullptr);
        if (object != nullptr) static_cast<IUnknown*>(object)->Release();
        EXPECT_EQ(E_POINTER, api_->QueryInterface(id, nullptr));
        ITypeInfo* type = nullptr;
        api_->GetTypeInfo(static_cast<UINT>(random_.Below(3)), 0, &type);
        if (type != nullptr) type->Release();
        std::wstring name = Wide(random_.Pieces(3, {"DP", "LoadFile", "Initialize", "x", "_"}));
        LPOLESTR found[] = {name.data(), name.data(), name.data()};
        DISPID ids[3] = {};
        static_cast<void>(api_->GetIDsOfNames(
            IID_NULL, found, static_cast<UINT>(1 + random_.Below(3)), LOCALE_USER_DEFAULT, ids));
    }

    const std::string root_ = DefineDepot("A", "Depot A");
    const BoxLog boxes_;
    // What a bare name makes is made there.
    const CurrentFolder current_{folder_.MakeFolder("now")};
    ScriptedDialogs dialogs_;
    RandomTexts random_{40};
    std::vector<std::string> texts_;
    LONG_PTR session_ = 0;
};

TEST_F(HostileCallsTest, RandomArgumentsLeaveTheObjectWorking) {
    constexpr int kBetweenFreshStarts = 100;
    for (int round = 0; round < Rounds(); ++round) {
        CallOnce();
        if (round % kBetweenFreshStarts == 0) {
            AskForInterfaces();
            Refresh();
        }
        if (HasFailure()) break;
    }
    Refresh();
    EXPECT_EQ(L"1", Read(session_, L"S", L"K"));
    EXPECT_THAT(api_->DPUnInitialize(session_), IsOk());
}

}  // namespace
}  // namespace depot::test
