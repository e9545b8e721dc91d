#include <fstream>
#include <string>

#include "bench/benches.h"
#include "bench/comparison.h"

namespace depot::bench {
namespace {

constexpr int kReads = 1000;
constexpr int kWrites = 100;
constexpr char kProfile[] = "C:\\bench.kre";

// A profile of about 20 KB whose section in the middle is read and written.
void MakeProfile() {
    std::ofstream profile(kProfile, std::ios::binary);
    for (int section = 0; section < 40; ++section) {
        profile << "[Section" << section << "]\r\n";
        for (int key = 0; key < 20; ++key) {
            profile << "Key" << key << "=value number " << key << "\r\n";
        }
    }
}

// The file settles: shortly after a change the system reads the whole file again for each value.
void LetProfileSettle() {
    Sleep(2100);
}

void RawReads() {
    char value[260];
    for (int call = 0; call < kReads; ++call) {
        GetPrivateProfileStringA("Section20", "Key10", "", value, sizeof(value), kProfile);
    }
}

// Values alternate, so that each write changes the file.
const char* RawValue(int call) {
    return call % 2 ? "value number 10" : "value number 11";
}

void RawWrites() {
    for (int call = 0; call < kWrites; ++call) {
        WritePrivateProfileStringA("Section20", "Key10", RawValue(call), kProfile);
    }
}

struct Texts {
    Text section{L"Section20"}, key{L"Key10"}, missing{L""};
    Text values[2] = {Text(L"value number 11"), Text(L"value number 10")};
};

void EarlyReads(IDepotIntrApi* api, LONG_PTR session, Texts& texts) {
    for (int call = 0; call < kReads; ++call) {
        Text value;
        api->DPGetProfileString(session, texts.section.Address(), texts.key.Address(),
                                texts.missing.Address(), value.Address(), 260);
    }
}

void EarlyWrites(IDepotIntrApi* api, LONG_PTR session, Texts& texts) {
    for (int call = 0; call < kWrites; ++call) {
        api->DPSetProfileString(session, texts.section.Address(), texts.key.Address(),
                                texts.values[call % 2].Address());
    }
}

VARIANT TextArgument(const Text& text) {
    VARIANT argument = {};
    V_VT(&argument) = VT_BSTR;
    V_BSTR(&argument) = text.Get();
    return argument;
}

VARIANT NumberArgument(LONG number) {
    VARIANT argument = {};
    V_VT(&argument) = VT_I4;
    V_I4(&argument) = number;
    return argument;
}

void Invoke(IDepotIntrApi* api, DISPID method, VARIANT* arguments, UINT count) {
    DISPPARAMS parameters = {arguments, nullptr, count, 0};
    api->Invoke(method, IID_NULL, LOCALE_USER_DEFAULT, DISPATCH_METHOD, &parameters, nullptr,
                nullptr, nullptr);
}

void LateReads(IDepotIntrApi* api, LONG_PTR session, const Texts& texts) {
    constexpr DISPID kGetProfileString = 5;
    for (int call = 0; call < kReads; ++call) {
        VARIANT value = {}, output = {};
        V_VT(&output) = VT_VARIANT | VT_BYREF;
        V_VARIANTREF(&output) = &value;
        VARIANT arguments[] = {
            NumberArgument(260),         output,
            TextArgument(texts.missing), TextArgument(texts.key),
            TextArgument(texts.section), NumberArgument(static_cast<LONG>(session))};
        Invoke(api, kGetProfileString, arguments, 6);
        VariantClear(&value);
    }
}

void LateWrites(IDepotIntrApi* api, LONG_PTR session, const Texts& texts) {
    constexpr DISPID kSetProfileString = 8;
    for (int call = 0; call < kWrites; ++call) {
        VARIANT arguments[] = {TextArgument(texts.values[call % 2]), TextArgument(texts.key),
                               TextArgument(texts.section),
                               NumberArgument(static_cast<LONG>(session))};
        Invoke(api, kSetProfileString, arguments, 4);
    }
}

}  // namespace

void MeasureValues(IDepotIntrApi* api) {
    MakeProfile();
    LONG_PTR session = 0;
    Text path(L"C:\\bench.kre");
    api->DPLoadFile(&session, path.Address());
    Texts texts;
    PrintHeader(
        "Values: 1,000 reads, 100 writes of a file of 20 KB, against the profile functions");
    LetProfileSettle();
    Compare(
        "read, early-bound", 1.1, [&] { EarlyReads(api, session, texts); }, RawReads);
    Compare(
        "read, late-bound", 1.1, [&] { LateReads(api, session, texts); }, RawReads);
    Compare(
        "write, early-bound", 1.1, [&] { EarlyWrites(api, session, texts); }, RawWrites);
    Compare(
        "write, late-bound", 1.1, [&] { LateWrites(api, session, texts); }, RawWrites);
    api->DPUnInitialize(session);
}

}  // namespace depot::bench
