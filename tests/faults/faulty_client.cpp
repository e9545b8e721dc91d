#include "faults/faulty_client.h"
#include "support/results.h"

namespace depot::test {
namespace {

constexpr std::string_view kWork = "<Work>\\";
constexpr std::string_view kCorp = "<Corp>\\";

bool HoldsEdit(const std::string& text) {
    return text.find("K=new") != std::string::npos;
}

}  // namespace

FaultyClientTest::FaultyClientTest() {
    ForgetServer(server_.Port());
    location_ = server_.Location(base_).Clone();
    items_ = std::make_unique<CLDAPItems>(location_.get());
    EXPECT_THAT(items_->ConnectLocation(nullptr), IsDone());
    DefineDirectoryDepot(depots_, "Corp", server_.Port(), base_);
    // From the first working copy on the component holds its journal, for good: also a test on a
    // folder may come to have one, where memory for the definition of its depot runs out.
    LONG_PTR handle = 0;
    EXPECT_THAT(api_->DPLoadFile(&handle, Text("<Corp>\\first.kra")), IsOk());
    EXPECT_THAT(api_->DPUnInitialize(handle), IsOk());
}

FaultyClientTest::Contents FaultyClientTest::Get(const std::string& displayPath) {
    if (displayPath.starts_with(kWork)) {
        const std::string path = work_ + "\\" + displayPath.substr(kWork.size());
        return Exists(path) ? Contents(FileBytes(path)) : std::nullopt;
    }
    const std::string path = base_ + "\\" + displayPath.substr(kCorp.size());
    FileBuffer buffer;
    if (items_->ReadFileContents(items_->PathToDN(path), buffer) == 0) {
        EXPECT_THAT(items_->LastError(), IsCode(LDAP_NO_SUCH_OBJECT));
        return std::nullopt;
    }
    return std::string(reinterpret_cast<const char*>(buffer.bytes.get()), buffer.length);
}

void FaultyClientTest::Put(const std::string& displayPath, const std::string& bytes) {
    if (displayPath.starts_with(kWork)) {
        const std::string file = "Work\\" + displayPath.substr(kWork.size());
        folder_.MakeFolder(file.substr(0, file.rfind('\\')));
        folder_.MakeFile(file, bytes);
        return;
    }
    const auto length = static_cast<std::uint32_t>(bytes.size());
    const std::string dn = items_->PathToDN(base_ + "\\" + displayPath.substr(kCorp.size()));
    const std::string name = displayPath.substr(displayPath.rfind('\\') + 1);
    EXPECT_THAT(items_->EnsureFolderPath(dn, false, nullptr), IsDone());
    if (items_->ReplaceFileContents(dn, bytes.data(), length) == LDAP_SUCCESS) return;
    EXPECT_THAT(items_->AddFileEntry(dn, name, bytes.data(), length), IsDone());
}

void FaultyClientTest::Remove(const std::string& displayPath) {
    if (displayPath.starts_with(kWork)) {
        DeleteFileA((work_ + "\\" + displayPath.substr(kWork.size())).c_str());
        return;
    }
    items_->DeleteTree(items_->PathToDN(base_ + "\\" + displayPath.substr(kCorp.size())), nullptr);
}

std::string FaultyClientTest::Recovered() {
    std::string kept;
    for (const std::string& path : RecoveredFiles()) kept += FileBytes(path);
    return kept;
}

std::string FaultyClientTest::Kept() {
    std::string kept = Recovered();
    for (const std::string& path : WorkingCopies()) kept += FileBytes(path);
    return kept;
}

LONG_PTR StoreFaultsTest::Load(const std::string& path) {
    LONG_PTR handle = 0;
    Succeeded(api_->DPLoadFile(&handle, Text(path)));
    return handle;
}

LONG_PTR StoreFaultsTest::LoadEdited(const std::string& path) {
    const LONG_PTR handle = Load(path);
    EXPECT_THAT(api_->DPSetProfileString(handle, Text("S"), Text("K"), Text("new")), IsOk());
    return handle;
}

std::wstring StoreFaultsTest::ReadValue(LONG_PTR handle) {
    OutText value;
    const bool read =
        Succeeded(api_->DPGetProfileString(handle, Text("S"), Text("K"), Text("-"), value, 99));
    EXPECT_EQ(read, !value.IsNull());
    return value.Value();
}

void ExpectNoNeedlessCopies(const std::string& elsewhere) {
    for (const std::string& path : WorkingCopies()) {
        const std::string bytes = FileBytes(path);
        EXPECT_TRUE(HoldsEdit(bytes) && !HoldsEdit(elsewhere))
            << path << " holds: " << bytes << "\nelsewhere: " << elsewhere;
    }
}

}  // namespace depot::test
