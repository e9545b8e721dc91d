#include "soak/hammer.h"
#include "support/results.h"

namespace depot::test {
namespace {

constexpr int kValues = 10;

std::string Value(int round) {
    return "value " + std::to_string(round);
}

std::string Key(int number) {
    return "K" + std::to_string(number);
}

// A session by itself: results are told, not tested, because other threads and processes run it.
class Client {
public:
    Client(IDepotIntrApi& api, const std::string& path) : api_(api), path_(path) {
        Check(api_.DPLoadFile(&handle_, Text(path)), "load");
    }
    ~Client() { End(); }
    Client(const Client&) = delete;
    Client& operator=(const Client&) = delete;

    std::string Read(const std::string& key) {
        BSTR text = nullptr;
        Check(api_.DPGetProfileString(handle_, Text("S"), Text(key), Text("none"), &text, 200),
              "read");
        const std::wstring wide(text, SysStringLen(text));
        SysFreeString(text);
        return std::string(wide.begin(), wide.end());
    }
    void Write(const std::string& key, const std::string& value) {
        Check(api_.DPSetProfileString(handle_, Text("S"), Text(key), Text(value)), "write");
    }
    void Flush() { Check(api_.DPFlushFile(handle_), "flush"); }
    void Expect(bool condition, const std::string& complaint) {
        if (!condition && complaint_.empty()) complaint_ = path_ + ": " + complaint;
    }
    std::string End() {
        if (handle_ != 0) Check(api_.DPUnInitialize(handle_), "end");
        handle_ = 0;
        return complaint_;
    }

private:
    void Check(HRESULT result, const char* what) { Expect(result == S_OK, what); }

    IDepotIntrApi& api_;
    std::string path_;
    LONG_PTR handle_ = 0;
    std::string complaint_;
};

void WriteTen(Client& client, int round) {
    for (int number = 1; number <= kValues; ++number) client.Write(Key(number), Value(round));
}

}  // namespace

std::string Filling() {
    std::string text = "[F]\r\n";
    for (int line = 0; line < 50; ++line) text += "L" + std::to_string(line) + "=filling\r\n";
    return text;
}

std::string RunSession(IDepotIntrApi& api, const std::string& path, int round) {
    Client client(api, path);
    const std::string before = client.Read(Key(1));
    client.Expect(before == (round == 0 ? "none" : Value(round - 1)), "read " + before);
    WriteTen(client, round);
    client.Flush();
    const std::string after = client.Read(Key(kValues));
    client.Expect(after == Value(round), "read back " + after);
    return client.End();
}

std::string RunSharedSession(IDepotIntrApi& api, const std::string& path, int round) {
    Client client(api, path);
    const std::string before = client.Read(Key(1));
    client.Expect(before.starts_with("value ") || before == "none", "read " + before);
    WriteTen(client, round);
    client.Flush();
    return client.End();
}

std::string RunListing(IDepotIntrApi& api, const std::string& folder, LONG expected) {
    LONG_PTR handle = 0;
    LONG count = -1;
    const HRESULT result = api.DPFindInit(&handle, Text(folder), Text(".kra"), APP_SKEIN, &count);
    if (handle != 0) api.DPUnInitialize(handle);
    if (result == S_OK && count == expected) return {};
    return folder + ": " + std::to_string(count) + " files";
}

}  // namespace depot::test
