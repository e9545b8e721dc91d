// A first client in C++: the same as first.vbs, through the interface's virtual functions.
//
// first [PROFILE]: another profile than that of the samples is named as "<Depot>\Folder\file.kre".
#include <DepotIntr.h>
#include <shellapi.h>

#include <cstdarg>
#include <cstdio>
#include <cwchar>
#include <string>

namespace {

constexpr wchar_t kSample[] = L"<Work>\\Sessions\\office.kre";

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

// Prints a line. Texts of the interface have every letter: a console shows them as they are, and a
// file receives them in the ANSI code page.
void Print(const wchar_t* format, ...) {
    wchar_t text[1024] = {};
    va_list values;
    va_start(values, format);
    const int length = std::vswprintf(text, 1024, format, values);
    va_end(values);
    if (length < 0) return;
    const HANDLE output = GetStdHandle(STD_OUTPUT_HANDLE);
    DWORD written = 0;
    if (WriteConsoleW(output, text, static_cast<DWORD>(length), &written, nullptr)) return;
    char bytes[4 * 1024];
    const int size =
        WideCharToMultiByte(CP_ACP, 0, text, length, bytes, sizeof(bytes), nullptr, nullptr);
    WriteFile(output, bytes, static_cast<DWORD>(size), &written, nullptr);
}

// The program's first argument, or else the sample's profile.
std::wstring ProfilePath() {
    int count = 0;
    wchar_t** const arguments = CommandLineToArgvW(GetCommandLineW(), &count);
    std::wstring path = count > 1 ? arguments[1] : kSample;
    LocalFree(arguments);
    return path;
}

void Show(IDepotIntrApi* depots, LONG_PTR session, const wchar_t* section, const wchar_t* key) {
    Text sectionText(section), keyText(key), missing(L"(not set)"), value;
    depots->DPGetProfileString(session, &sectionText, &keyText, &missing, &value, 260);
    Print(L"[%ls] %ls: {%ls}\n", section, key, value.get());
}

void Write(IDepotIntrApi* depots, LONG_PTR session, const wchar_t* key, const wchar_t* value) {
    Text section(L"Notes"), keyText(key), valueText(value);
    depots->DPSetProfileString(session, &section, &keyText, &valueText);
}

int Run(IDepotIntrApi* depots) {
    LONG_PTR session = 0;
    // Every refusal is S_FALSE, so success is tested for, not failure.
    if (depots->DPInitialize(&session) != S_OK) return 1;

    Text home, folder, profile(ProfilePath());
    depots->DPGetDefaultDPPath(session, &home);
    Print(L"Default depot:  %ls\n", home.get());
    depots->DPPathConvertDPtoFS(&profile, &folder);
    Print(L"Kept in:        %ls\n", folder.get());

    depots->DPLoadFile(&session, &profile);
    Show(depots, session, L"PROFILE", L"Title");
    Show(depots, session, L"Host", L"Name");
    Show(depots, session, L"Screen", L"Font");
    Show(depots, session, L"Keyboard", L"Layout");
    Text host(L"Host"), port(L"Port");
    ULONG number = 0;
    depots->DPGetProfileInt(session, &host, &port, 23, &number);
    Print(L"[Host] Port:    %lu\n", number);

    // What is written comes back exactly, leading blanks and quotes included.
    Write(depots, session, L"Indented", L"   three blanks before");
    Write(depots, session, L"Quoted", L"\"in double quotes\"");
    Show(depots, session, L"Notes", L"Indented");
    Show(depots, session, L"Notes", L"Quoted");

    depots->DPUnInitialize(session);
    Print(L"Session ended.\n");
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
