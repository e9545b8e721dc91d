// DepotIntr for programs in C++: sessions that end by themselves, texts as std::wstring, failures
// as exceptions. It needs nothing but DepotIntr.h and its identifiers (DepotIntr_i.c), and C++17.
//
//     depotintr::Apartment apartment;
//     depotintr::Session session;
//     session.load(L"<Work>\\Sessions\\office.kre");
//     std::wstring host = session.value(L"Host", L"Name");
//
// Every text may be given as std::wstring, or as std::string in UTF-8. An object is used by the
// thread, or the apartment, that made it.
#ifndef DEPOTINTR_HPP
#define DEPOTINTR_HPP

#include <DepotIntr.h>
#include <oleauto.h>

#include <functional>
#include <memory>
#include <stdexcept>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace depotintr {

inline std::wstring wide(std::string_view utf8) {
    const int bytes = static_cast<int>(utf8.size());
    const int length = MultiByteToWideChar(CP_UTF8, 0, utf8.data(), bytes, nullptr, 0);
    std::wstring text(static_cast<std::size_t>(length), L'\0');
    MultiByteToWideChar(CP_UTF8, 0, utf8.data(), bytes, text.data(), length);
    return text;
}

inline std::string utf8(std::wstring_view wide) {
    const int units = static_cast<int>(wide.size());
    const int length =
        WideCharToMultiByte(CP_UTF8, 0, wide.data(), units, nullptr, 0, nullptr, nullptr);
    std::string text(static_cast<std::size_t>(length), '\0');
    WideCharToMultiByte(CP_UTF8, 0, wide.data(), units, text.data(), length, nullptr, nullptr);
    return text;
}

// A call that failed. `code` is the system's code of what happened, or the HRESULT of a call that
// did not get as far; what() is the text in UTF-8.
class Error : public std::runtime_error {
public:
    Error(long code, std::wstring text)
        : std::runtime_error(utf8(text)), code_(code), text_(std::move(text)) {}
    long code() const noexcept { return code_; }
    const std::wstring& text() const noexcept { return text_; }

private:
    long code_;
    std::wstring text_;
};

// COM for the thread, as long as the object lives.
class Apartment {
public:
    explicit Apartment(DWORD kind = COINIT_APARTMENTTHREADED) {
        const HRESULT result = CoInitializeEx(nullptr, kind);
        if (FAILED(result)) throw Error(result, L"COM cannot be used by this thread.");
    }
    ~Apartment() { CoUninitialize(); }
    Apartment(const Apartment&) = delete;
    Apartment& operator=(const Apartment&) = delete;
};

namespace detail {

struct Releaser {
    void operator()(IUnknown* object) const { object->Release(); }
};
template <class Interface>
using Com = std::unique_ptr<Interface, Releaser>;

struct BstrFreer {
    void operator()(BSTR text) const { SysFreeString(text); }
};
using Bstr = std::unique_ptr<OLECHAR, BstrFreer>;

inline std::wstring take(BSTR text) {
    const Bstr owned(text);
    return text != nullptr ? std::wstring(text, SysStringLen(text)) : std::wstring();
}

// The paths of an array of variants, which is freed.
inline std::vector<std::wstring> take(VARIANT& array) {
    struct Cleared {
        VARIANT& value;
        ~Cleared() { VariantClear(&value); }
    } const cleared{array};
    std::vector<std::wstring> texts;
    if (V_VT(&array) != (VT_ARRAY | VT_VARIANT)) return texts;
    LONG last = -1;
    SafeArrayGetUBound(V_ARRAY(&array), 1, &last);
    for (LONG index = 0; index <= last; ++index) {
        VARIANT element;
        VariantInit(&element);
        if (FAILED(SafeArrayGetElement(V_ARRAY(&array), &index, &element))) throw std::bad_alloc();
        const Cleared freed{element};
        if (V_VT(&element) == VT_BSTR)
            texts.emplace_back(V_BSTR(&element), SysStringLen(V_BSTR(&element)));
    }
    return texts;
}

}  // namespace detail

// A text that is given to a call, of either kind.
class Text {
public:
    Text(std::wstring_view text)
        : text_(SysAllocStringLen(text.data(), static_cast<UINT>(text.size()))) {
        if (!text_) throw std::bad_alloc();
        address_ = text_.get();
    }
    Text(const std::wstring& text) : Text(std::wstring_view(text)) {}
    Text(const wchar_t* text) : Text(std::wstring_view(text)) {}
    Text(std::string_view text) : Text(wide(text)) {}
    Text(const std::string& text) : Text(std::string_view(text)) {}
    Text(const char* text) : Text(std::string_view(text)) {}

    BSTR get() const { return text_.get(); }
    // The first interface takes every text by its address; it does not change one.
    BSTR* address() const { return const_cast<BSTR*>(&address_); }

private:
    detail::Bstr text_;
    BSTR address_ = nullptr;
};

// How far a copy or a move is: files that are done, files in all, bytes that are done. Returns
// whether to go on.
using Progress = std::function<bool(long done, long all, double bytes)>;

struct Depot {
    std::wstring key;
    std::wstring name;
    std::wstring location;
};

namespace detail {

// The object that hears of the progress. It lives as long as the call; an exception of the function
// stops the transfer and is thrown again behind it.
class ProgressObject final : public IDispatch {
public:
    explicit ProgressObject(const Progress& progress) : progress_(progress) {}
    void rethrow() const {
        if (thrown_) std::rethrow_exception(thrown_);
    }

    STDMETHODIMP QueryInterface(REFIID id, void** object) noexcept override {
        if (object == nullptr) return E_POINTER;
        const bool known = IsEqualIID(id, IID_IUnknown) || IsEqualIID(id, IID_IDispatch);
        *object = known ? this : nullptr;
        return known ? S_OK : E_NOINTERFACE;
    }
    STDMETHODIMP_(ULONG) AddRef() noexcept override { return 1; }
    STDMETHODIMP_(ULONG) Release() noexcept override { return 1; }
    STDMETHODIMP GetTypeInfoCount(UINT* count) noexcept override {
        if (count != nullptr) *count = 0;
        return S_OK;
    }
    STDMETHODIMP GetTypeInfo(UINT, LCID, ITypeInfo**) noexcept override { return E_NOTIMPL; }
    STDMETHODIMP GetIDsOfNames(REFIID, LPOLESTR*, UINT count, LCID, DISPID* ids) noexcept override {
        if (ids == nullptr || count != 1) return DISP_E_UNKNOWNNAME;
        *ids = 1;
        return S_OK;
    }
    STDMETHODIMP Invoke(DISPID, REFIID, LCID, WORD, DISPPARAMS* given, VARIANT* result, EXCEPINFO*,
                        UINT*) noexcept override try {
        if (given == nullptr || given->cArgs != 3) return DISP_E_BADPARAMCOUNT;
        const bool goesOn =
            progress_(V_I4(&given->rgvarg[2]), V_I4(&given->rgvarg[1]), V_R8(&given->rgvarg[0]));
        if (result != nullptr) {
            V_VT(result) = VT_BOOL;
            V_BOOL(result) = goesOn ? VARIANT_TRUE : VARIANT_FALSE;
        }
        return S_OK;
    } catch (...) {
        thrown_ = std::current_exception();
        return E_FAIL;
    }

private:
    const Progress& progress_;
    std::exception_ptr thrown_;
};

}  // namespace detail

// A session, which ends with the object: its changed file is stored then. Every call that fails
// throws Error. The component stores what a file of a directory had changed when the next one is
// loaded, at flush() and at the end.
class Session {
public:
    Session() {
        void* made = nullptr;
        const HRESULT created = CoCreateInstance(CLSID_DepotIntrApi, nullptr, CLSCTX_INPROC_SERVER,
                                                 IID_IDepotIntrApi2, &made);
        if (FAILED(created)) throw Error(created, L"DepotIntr is not registered.");
        api_.reset(static_cast<IDepotIntrApi2*>(made));
        check(api_->DPInitialize(&handle_));
    }
    ~Session() { api_->DPUnInitialize(handle_); }
    Session(const Session&) = delete;
    Session& operator=(const Session&) = delete;

    // For what has no function here.
    IDepotIntrApi2* api() const { return api_.get(); }
    LONG_PTR handle() const { return handle_; }
    // Throws for any result but S_OK.
    void check(HRESULT result) const {
        if (result == S_OK) return;
        if (FAILED(result)) throw Error(result, L"The call failed.");
        LONG code = 0;
        BSTR text = nullptr;
        api_->LastErrorCode(handle_, &code);
        api_->LastErrorText(handle_, &text);
        throw Error(code, detail::take(text));
    }

    // While it is on, no call shows a box or asks for credentials. Returns what it was.
    bool quiet(bool on = true) { return answer(&IDepotIntrApi2::Quiet, truth(on)); }

    // Values of the current file.
    void load(const Text& file) { check(api_->DPLoadFile(&handle_, file.address())); }
    void flush() { check(api_->DPFlushFile(handle_)); }
    std::wstring value(const Text& section, const Text& key, const Text& otherwise = L"") {
        constexpr ULONG kLongest = 0x7FFF;
        BSTR text = nullptr;
        check(api_->DPGetProfileString(handle_, section.address(), key.address(),
                                       otherwise.address(), &text, kLongest));
        return detail::take(text);
    }
    unsigned long number(const Text& section, const Text& key, unsigned long otherwise = 0) {
        ULONG found = otherwise;
        check(api_->DPGetProfileInt(handle_, section.address(), key.address(), otherwise, &found));
        return found;
    }
    void setValue(const Text& section, const Text& key, const Text& value) {
        check(api_->DPSetProfileString(handle_, section.address(), key.address(), value.address()));
    }

    // Names.
    std::wstring defaultPath() {
        BSTR path = nullptr;
        check(api_->DPGetDefaultDPPath(handle_, &path));
        return detail::take(path);
    }
    std::wstring localPath(const Text& path) {
        BSTR local = nullptr;
        const HRESULT found = api_->DPPathConvertDPtoFS(path.address(), &local);
        if (found != S_OK) throw Error(ERROR_PATH_NOT_FOUND, L"The path is none of a local file.");
        return detail::take(local);
    }

    // Files and folders anywhere: by depot or by absolute paths.
    bool exists(const Text& path) { return answer(&IDepotIntrApi2::Exists, path.get()); }
    bool isWritable(const Text& path) {
        VARIANT_BOOL writable = VARIANT_FALSE;
        return api_->IsWritable(handle_, path.get(), &writable) == S_OK;
    }
    std::wstring readText(const Text& file) {
        BSTR text = nullptr;
        check(api_->ReadText(handle_, file.get(), &text));
        return detail::take(text);
    }
    void writeText(const Text& file, const Text& text, TEXT_ENCODING encoding = TEXT_AS_IT_IS) {
        answer(&IDepotIntrApi2::WriteText, file.get(), text.get(), encoding);
    }
    std::vector<std::wstring> find(const Text& folder, const Text& extensions = L"",
                                   FIND_WHAT what = FIND_FILES) {
        VARIANT paths;
        VariantInit(&paths);
        check(api_->Find(handle_, folder.get(), extensions.get(), what, &paths));
        return detail::take(paths);
    }
    std::vector<std::wstring> chosenFiles() {
        VARIANT paths;
        VariantInit(&paths);
        check(api_->ChosenFiles(handle_, &paths));
        return detail::take(paths);
    }
    void copy(const Text& from, const Text& to, bool mayExist = false,
              const Progress& progress = {}) {
        transfer(&IDepotIntrApi2::Copy, from, to, mayExist, progress);
    }
    void move(const Text& from, const Text& to, bool mayExist = false,
              const Progress& progress = {}) {
        transfer(&IDepotIntrApi2::Move, from, to, mayExist, progress);
    }
    void makeFolder(const Text& folder, bool mayExist = false) {
        answer(&IDepotIntrApi2::MakeFolder, folder.get(), truth(mayExist));
    }
    void remove(const Text& file) { check(api_->DPDeleteFile(handle_, file.address())); }

    std::vector<Depot> depots() {
        const auto list = openDepots();
        LONG count = 0;
        check(list->get_Count(&count));
        std::vector<Depot> depots;
        for (LONG number = 1; number <= count; ++number) {
            VARIANT index;
            V_VT(&index) = VT_I4;
            V_I4(&index) = number;
            const auto info = item(*list, index);
            depots.push_back({get(*info, &IDepotInfo::get_Key), get(*info, &IDepotInfo::get_Name),
                              get(*info, &IDepotInfo::get_Location)});
        }
        return depots;
    }
    bool isReachable(const Text& key) {
        VARIANT index;
        V_VT(&index) = VT_BSTR;
        V_BSTR(&index) = key.get();
        VARIANT_BOOL reachable = VARIANT_FALSE;
        return item(*openDepots(), index)->get_Reachable(&reachable) == S_OK;
    }

private:
    static VARIANT_BOOL truth(bool value) { return value ? VARIANT_TRUE : VARIANT_FALSE; }

    template <class Method, class... Arguments>
    bool answer(Method method, Arguments... arguments) const {
        VARIANT_BOOL value = VARIANT_FALSE;
        check((api_.get()->*method)(handle_, arguments..., &value));
        return value != VARIANT_FALSE;
    }

    template <class Method>
    void transfer(Method method, const Text& from, const Text& to, bool mayExist,
                  const Progress& progress) const {
        detail::ProgressObject object(progress);
        VARIANT given;
        VariantInit(&given);
        if (progress) {
            V_VT(&given) = VT_DISPATCH;
            V_DISPATCH(&given) = &object;
        }
        VARIANT_BOOL done = VARIANT_FALSE;
        const HRESULT result =
            (api_.get()->*method)(handle_, from.get(), to.get(), truth(mayExist), given, &done);
        object.rethrow();
        check(result);
    }

    detail::Com<IDepotInfos> openDepots() const {
        IDepotInfos* list = nullptr;
        check(api_->Depots(handle_, &list));
        return detail::Com<IDepotInfos>(list);
    }
    detail::Com<IDepotInfo> item(IDepotInfos& list, const VARIANT& index) const {
        IDepotInfo* info = nullptr;
        check(list.get_Item(index, &info));
        return detail::Com<IDepotInfo>(info);
    }
    std::wstring get(IDepotInfo& info,
                     HRESULT (STDMETHODCALLTYPE IDepotInfo::*getter)(BSTR*)) const {
        BSTR text = nullptr;
        check((info.*getter)(&text));
        return detail::take(text);
    }

    detail::Com<IDepotIntrApi2> api_;
    LONG_PTR handle_ = 0;
};

}  // namespace depotintr

#endif
