// A first client in C++: the same as first.vbs, through the interface's virtual functions.
#include <DepotIntr.h>

#include <cstdio>
#include <string>

namespace {

constexpr wchar_t kProfile[] = L"<Work>\\Sessions\\office.kre";

// A BSTR that frees itself. Every text of the interface is passed by the address of a BSTR.
class Text {
public:
    Text() = default;
    explicit Text(const std::wstring& text) : text_(SysAllocString(text.c_str())) {}
    ~Text() { SysFreeString(text_); }
    Text(const Text&) = delete;
    Text& operator=(const Text&) = delete;
    BSTR* operator&() { return &text_; }
    const wchar_t* get() const { return text_ ? text_ : L""; }

private:
    BSTR text_ = nullptr;
};

void Show(IDepotIntrApi* depots, LONG_PTR session, const wchar_t* section, const wchar_t* key) {
    Text sectionText(section), keyText(key), missing(L"(not set)"), value;
    depots->DPGetProfileString(session, &sectionText, &keyText, &missing, &value, 260);
    std::wprintf(L"[%ls] %ls: {%ls}\n", section, key, value.get());
}

void Write(IDepotIntrApi* depots, LONG_PTR session, const wchar_t* key, const wchar_t* value) {
    Text section(L"Notes"), keyText(key), valueText(value);
    depots->DPSetProfileString(session, &section, &keyText, &valueText);
}

int Run(IDepotIntrApi* depots) {
    LONG_PTR session = 0;
    // Every refusal is S_FALSE, so success is tested for, not failure.
    if (depots->DPInitialize(&session) != S_OK) return 1;

    Text home, folder, profile(kProfile);
    depots->DPGetDefaultDPPath(session, &home);
    std::wprintf(L"Default depot:  %ls\n", home.get());
    depots->DPPathConvertDPtoFS(&profile, &folder);
    std::wprintf(L"Kept in:        %ls\n", folder.get());

    depots->DPLoadFile(&session, &profile);
    Show(depots, session, L"PROFILE", L"Title");
    Show(depots, session, L"Host", L"Name");
    Show(depots, session, L"Screen", L"Font");
    Show(depots, session, L"Keyboard", L"Layout");
    Text host(L"Host"), port(L"Port");
    ULONG number = 0;
    depots->DPGetProfileInt(session, &host, &port, 23, &number);
    std::wprintf(L"[Host] Port:    %lu\n", number);

    // What is written comes back exactly, leading blanks and quotes included.
    Write(depots, session, L"Indented", L"   three blanks before");
    Write(depots, session, L"Quoted", L"\"in double quotes\"");
    Show(depots, session, L"Notes", L"Indented");
    Show(depots, session, L"Notes", L"Quoted");

    depots->DPUnInitialize(session);
    std::wprintf(L"Session ended.\n");
    return 0;
}

}  // namespace

int main() {
    CoInitialize(nullptr);
    IDepotIntrApi* depots = nullptr;
    const HRESULT created = CoCreateInstance(CLSID_DepotIntrApi, nullptr, CLSCTX_INPROC_SERVER,
                                             IID_IDepotIntrApi, reinterpret_cast<void**>(&depots));
    if (FAILED(created)) {
        std::fprintf(stderr, "DepotIntr is not registered (0x%08lx).\n", created);
        return 1;
    }
    const int result = Run(depots);
    depots->Release();
    CoUninitialize();
    return result;
}
