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

StoreFaultsTest::StoreFaultsTest() {
    // From the first working copy on the component holds its journal, for good: also a test on a
    // folder may come to have one, where memory for the definition of its depot runs out.
    LONG_PTR handle = 0;
    EXPECT_THAT(api_->DPLoadFile(&handle, Text("<Corp>\\first.kra")), IsOk());
    EXPECT_THAT(api_->DPUnInitialize(handle), IsOk());
}

StoreFaultsTest::Contents StoreFaultsTest::Get(const std::string& displayPath) {
    if (displayPath.starts_with(kWork)) {
        const std::string path = work_ + "\\" + displayPath.substr(kWork.size());
        return Exists(path) ? Contents(FileBytes(path)) : std::nullopt;
    }
    const std::string path = corp_.base + "\\" + displayPath.substr(kCorp.size());
    FileBuffer buffer;
    if (corp_.items.ReadFileContents(corp_.items.PathToDN(path), buffer) == 0) {
        EXPECT_THAT(corp_.items.LastError(), IsCode(LDAP_NO_SUCH_OBJECT));
        return std::nullopt;
    }
    return std::string(reinterpret_cast<const char*>(buffer.bytes.get()), buffer.length);
}

void StoreFaultsTest::Put(const std::string& displayPath, const std::string& bytes) {
    if (displayPath.starts_with(kWork)) {
        const std::string file = "Work\\" + displayPath.substr(kWork.size());
        folder_.MakeFolder(file.substr(0, file.rfind('\\')));
        folder_.MakeFile(file, bytes);
        return;
    }
    const auto length = static_cast<std::uint32_t>(bytes.size());
    const std::string dn =
        corp_.items.PathToDN(corp_.base + "\\" + displayPath.substr(kCorp.size()));
    const std::string name = displayPath.substr(displayPath.rfind('\\') + 1);
    EXPECT_THAT(corp_.items.EnsureFolderPath(dn, false, nullptr), IsDone());
    if (corp_.items.ReplaceFileContents(dn, bytes.data(), length) == LDAP_SUCCESS) return;
    EXPECT_THAT(corp_.items.AddFileEntry(dn, name, bytes.data(), length), IsDone());
}

void StoreFaultsTest::Remove(const std::string& displayPath) {
    if (displayPath.starts_with(kWork)) {
        DeleteFileA((work_ + "\\" + displayPath.substr(kWork.size())).c_str());
        return;
    }
    corp_.items.DeleteTree(
        corp_.items.PathToDN(corp_.base + "\\" + displayPath.substr(kCorp.size())), nullptr);
}

std::vector<std::string> StoreFaultsTest::NamesIn(const std::string& relative) {
    std::vector<std::string> names;
    if (IsFolderDepot()) {
        for (const std::string& path : FilesIn(work_ + "\\" + relative, "*")) {
            names.push_back(path.substr(path.rfind('\\') + 1));
        }
        return names;
    }
    LdapItemList children;
    corp_.items.ListChildren(corp_.items.PathToDN(corp_.base + "\\" + relative), children);
    for (const CLDAPItem* child : children) {
        std::string name;
        bool isFolder = false;
        corp_.items.SplitEntryName(child->path, name, isFolder);
        names.push_back(name);
    }
    return names;
}

std::string StoreFaultsTest::Recovered() {
    std::string kept;
    for (const std::string& path : RecoveredFiles()) kept += FileBytes(path);
    return kept;
}

std::string StoreFaultsTest::Kept() {
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

LONG_PTR StoreFaultsTest::LoadEditedBeside(const std::string& path, const std::string& other) {
    Forget();
    Put(path, kOld);
    Put(other, kOld);
    return LoadEdited(path);
}

void StoreFaultsTest::ExpectEditKept(const std::string& path, const std::string& other) {
    const std::string stored = Get(path).value_or("(missing)");
    EXPECT_THAT(stored, testing::AnyOf(kOld, kNew, " "));
    EXPECT_THAT(stored + Kept(), testing::HasSubstr("K=new"));
    EXPECT_EQ(kOld, Get(other));
}

std::wstring StoreFaultsTest::ReadValue(LONG_PTR handle) {
    OutText value;
    const bool read =
        Succeeded(api_->DPGetProfileString(handle, Text("S"), Text("K"), Text("-"), value, 99));
    EXPECT_EQ(read, !value.IsNull());
    return value.Value();
}

bool StoreFaultsTest::IsWritable(const std::string& path) {
    LONG_PTR handle = 0;
    if (!Succeeded(api_->DPInitialize(&handle))) return false;
    const bool writable = Succeeded(api_->DPIsPathWriteAble(handle, Text(path)));
    End(handle);
    return writable;
}

void ExpectNoNeedlessCopies(const std::string& elsewhere) {
    for (const std::string& path : WorkingCopies()) {
        const std::string bytes = FileBytes(path);
        EXPECT_TRUE(HoldsEdit(bytes) && !HoldsEdit(elsewhere))
            << path << " holds: " << bytes << "\nelsewhere: " << elsewhere;
    }
}

}  // namespace depot::test
