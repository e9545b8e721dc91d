#include "disasters/disaster_world.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>

#include "directory/comparable_dn.h"
#include "platform/system_code_page.h"
#include "platform/wide_text.h"
#include "store/directory_store.h"
#include "store/folder_store.h"
#include "store/tree.h"

namespace depot::test {
namespace {

constexpr char kEnd[] = "[End]\r\nend=1\r\n";
constexpr std::size_t kLately = 20;

std::string WholeText(const std::string& id, const std::string& line) {
    return "[All]\r\nid=" + id + "\r\n[User]\r\n" + line + "\r\n" + kEnd;
}

bool HasLine(const std::string& text, const std::string& line) {
    return text.find("\n" + line + "\r\n") != std::string::npos;
}

std::string IdentityOf(const std::string& text) {
    const std::size_t start = text.find("\nid=");
    if (start == std::string::npos) return {};
    return text.substr(start + 4, text.find('\r', start) - start - 4);
}

std::wstring WidePath(const std::string& path) {
    return WideFromAnsi(path);
}

}  // namespace

DisastersTest::DisastersTest() : api2_(Api2Of(*api_)) {
    ForgetServer(server_.Port());
    // This program looks into both stores by the same characters as the component.
    InstallSystemCodePage();
}

void DisastersTest::Begin(unsigned seed) {
    random_.seed(seed);
    number_ = seed * 100'000;
    done_.clear();
    expected_.clear();
    cleanFiles_.emplace();
    cleanOffline_.emplace();
    work_ = DefineDepot("Work" + std::to_string(seed));
    depots_.Text("Work", "Path1", work_);
    base_ = NewFolder();
    location_ = server_.Location(base_).Clone();
    items_ = std::make_unique<CLDAPItems>(location_.get());
    DefineDirectoryDepot(depots_, "Corp", relay_.Port(), base_);
    depots_.Dword("Corp", "KeepConnection1", seed % 2 == 0 ? 60 : 0);
    depots_.Dword("Corp", "Offline1", seed % 3 == 0 ? 1 : 0);
    depots_.Dword("Corp", "DetectConflicts1", seed % 3);
    Look();
    for (int file = 0; file < 6; ++file) Create();
    Look();
}

void DisastersTest::DoOne() {
    ForgetServer(relay_.Port());
    switch (Below(20)) {
        case 0:
            return List();
        case 1:
            return CopyOut();
        case 2:
            return MakeCopy();
        case 3:
            return shown_.files.size() > 8 ? Delete() : Create();
        case 4:
            return CopyTo(true);
        case 5:
            return CopyTo(false);
        case 6:
            return MoveFolder();
        case 7:
        case 8:
            return Rename();
        case 9:
        case 10:
        case 11:
            return MoveFile();
        case 12:
        case 13:
            return WriteWhole();
        default:
            return Edit();
    }
}

bool DisastersTest::Session(const std::function<bool(LONG_PTR handle)>& work) {
    LONG_PTR handle = 0;
    if (api_->DPInitialize(&handle) != S_OK || handle == 0) return false;
    const bool isDone = work(handle);
    api_->DPUnInitialize(handle);
    return isDone;
}

bool DisastersTest::WentWell(LONG_PTR handle, HRESULT result) {
    LONG code = 0;
    return result == S_OK && api2_->LastErrorCode(handle, &code) == S_OK && code == 0;
}

void DisastersTest::Note(const std::string& what, bool isDone) {
    done_.push_back(what + (isDone ? "" : ": failed"));
    if (std::getenv("DEPOTINTR_TELL") != nullptr)
        std::fprintf(stderr, "%s\n", done_.back().c_str());
    if (done_.size() > kLately) done_.erase(done_.begin());
}

std::string DisastersTest::Lately() const {
    std::string text;
    for (const std::string& each : done_) text += each + "\n";
    return text;
}

const ShownFile* DisastersTest::AnyFile() {
    if (shown_.files.empty()) return nullptr;
    return &shown_.files[Below(static_cast<unsigned>(shown_.files.size()))];
}

std::string DisastersTest::FreshPath(const char* ending) {
    std::string folder = Below(2) == 0 ? "<Work>" : "<Corp>";
    if (!shown_.folders.empty() && Below(3) == 0) {
        folder = shown_.folders[Below(static_cast<unsigned>(shown_.folders.size()))];
    }
    return folder + "\\n" + LetterOfCodePage() + std::to_string(++number_) + ending;
}

bool DisastersTest::IsShown(const std::string& id, const std::string& line,
                            const std::string& butAt) {
    const auto holds = [&](const ShownFile& file) {
        return file.path != butAt && HasLine(file.bytes, "id=" + id) && HasLine(file.bytes, line);
    };
    return std::ranges::any_of(shown_.files, holds) || std::ranges::any_of(shown_.covered, holds) ||
           HasLine(shown_.rescued, line);
}

void DisastersTest::GiveUp(const std::string& path) {
    for (const ShownFile& file : shown_.files) {
        if (file.path != path) continue;
        const std::string id = IdentityOf(file.bytes);
        const auto found = expected_.find(id);
        if (found == expected_.end()) return;
        std::erase_if(found->second,
                      [&](const std::string& line) { return !IsShown(id, line, path); });
        if (!IsShown(id, "id=" + id, path)) expected_.erase(found);
        return;
    }
}

void DisastersTest::Create() {
    const std::string path = FreshPath(".kra");
    const std::string id = "file" + std::to_string(++number_);
    const std::string line = "v" + std::to_string(++number_) + "=new";
    const bool isDone = Session([&](LONG_PTR handle) {
        VARIANT_BOOL answer = VARIANT_FALSE;
        const HRESULT result = api2_->WriteText(
            handle, Bstr(WidePath(path)), Bstr(Wide(WholeText(id, line))), TEXT_AS_IT_IS, &answer);
        return result == S_OK && answer == VARIANT_TRUE;
    });
    Note("create " + path, isDone);
    if (isDone) expected_[id].insert(line);
}

void DisastersTest::WriteWhole() {
    const ShownFile* const file = AnyFile();
    if (file == nullptr) return;
    const std::string path = file->path, id = IdentityOf(file->bytes);
    const std::string line = "w" + std::to_string(++number_) + "=whole";
    const bool isDone = Session([&](LONG_PTR handle) {
        VARIANT_BOOL answer = VARIANT_FALSE;
        const HRESULT result = api2_->WriteText(
            handle, Bstr(WidePath(path)), Bstr(Wide(WholeText(id, line))), TEXT_AS_IT_IS, &answer);
        return result == S_OK && answer == VARIANT_TRUE;
    });
    Note("write " + path + " " + line, isDone);
    const auto found = expected_.find(id);
    if (found == expected_.end()) return;
    if (!isDone) {
        // One of the two texts has to be there.
        Look();
        if (!IsShown(id, line)) return;
    }
    GiveUp(path);
    expected_[id].insert(line);
}

void DisastersTest::Edit() {
    const ShownFile* const file = AnyFile();
    if (file == nullptr) return;
    const std::string path = file->path, id = IdentityOf(file->bytes);
    const std::string key = "k" + std::to_string(++number_);
    const bool isDone = Session([&](LONG_PTR handle) {
        LONG_PTR loaded = handle;
        VARIANT_BOOL before = VARIANT_FALSE;
        // What a person would read in a box, a quiet session's client asks for.
        api2_->Quiet(handle, VARIANT_TRUE, &before);
        return WentWell(handle, api_->DPLoadFile(&loaded, Text(WidePath(path)))) &&
               WentWell(handle, api_->DPSetProfileString(handle, Text(L"User"), Text(key),
                                                         Text(L"edited"))) &&
               WentWell(handle, api_->DPFlushFile(handle));
    });
    Note("edit " + path + " " + key, isDone);
    if (isDone && expected_.contains(id)) expected_[id].insert(key + "=edited");
}

void DisastersTest::CopyTo(bool mayExist) {
    const ShownFile* const file = AnyFile();
    if (file == nullptr) return;
    const std::string from = file->path;
    const std::string to = mayExist ? AnyFile()->path : FreshPath(".kra");
    if (from == to) return;
    if (mayExist) GiveUp(to);
    const bool isDone = Session([&](LONG_PTR handle) {
        VARIANT_BOOL answer = VARIANT_FALSE;
        return api2_->Copy(handle, Bstr(WidePath(from)), Bstr(WidePath(to)),
                           mayExist ? VARIANT_TRUE : VARIANT_FALSE, VARIANT{}, &answer) == S_OK &&
               answer == VARIANT_TRUE;
    });
    Note("copy " + from + " to " + to, isDone);
}

void DisastersTest::MoveFile() {
    const ShownFile* const file = AnyFile();
    if (file == nullptr) return;
    const std::string from = file->path, to = FreshPath(".kra");
    const bool isDone = Session([&](LONG_PTR handle) {
        VARIANT_BOOL answer = VARIANT_FALSE;
        return api2_->Move(handle, Bstr(WidePath(from)), Bstr(WidePath(to)), VARIANT_FALSE,
                           VARIANT{}, &answer) == S_OK &&
               answer == VARIANT_TRUE;
    });
    Note("move " + from + " to " + to, isDone);
}

void DisastersTest::MoveFolder() {
    const bool isNew = shown_.folders.size() < 3;
    const std::string to = FreshPath("");
    if (std::count(to.begin(), to.end(), '\\') > 3) return;
    const std::string from =
        isNew ? std::string() : shown_.folders[Below(static_cast<unsigned>(shown_.folders.size()))];
    const bool isDone = Session([&](LONG_PTR handle) {
        VARIANT_BOOL answer = VARIANT_FALSE;
        const HRESULT result =
            isNew ? api2_->MakeFolder(handle, Bstr(WidePath(to)), VARIANT_FALSE, &answer)
                  : api2_->Move(handle, Bstr(WidePath(from)), Bstr(WidePath(to)), VARIANT_FALSE,
                                VARIANT{}, &answer);
        return result == S_OK && answer == VARIANT_TRUE;
    });
    Note("folder " + from + " to " + to, isDone);
}

void DisastersTest::Rename() {
    const ShownFile* const file = AnyFile();
    if (file == nullptr) return;
    const std::string from = file->path;
    const std::string to =
        from.substr(0, from.rfind('\\') + 1) + "r" + std::to_string(++number_) + ".kra";
    const bool isDone = Session([&](LONG_PTR handle) {
        return api_->DPRenameFile(handle, Text(WidePath(from)), Text(WidePath(to))) == S_OK;
    });
    Note("rename " + from + " to " + to, isDone);
}

void DisastersTest::Delete() {
    const ShownFile* const file = AnyFile();
    if (file == nullptr) return;
    const std::string path = file->path;
    GiveUp(path);
    const bool isDone = Session(
        [&](LONG_PTR handle) { return api_->DPDeleteFile(handle, Text(WidePath(path))) == S_OK; });
    Note("delete " + path, isDone);
}

void DisastersTest::MakeCopy() {
    const ShownFile* const file = AnyFile();
    if (file == nullptr) return;
    const std::string path = file->path;
    const bool isDone = Session([&](LONG_PTR handle) {
        OutText name;
        return api_->DPMakeCopyFromSrcFile(handle, Text(WidePath(path)), name) == S_OK;
    });
    Note("copy beside " + path, isDone);
}

void DisastersTest::CopyOut() {
    const ShownFile* const file = AnyFile();
    if (file == nullptr) return;
    const std::string path = file->path;
    const bool isDone = Session([&](LONG_PTR handle) {
        return api_->DPCopyFileToLocalFS(handle, Text(WidePath(path)), Text(folder_.At("out.txt")),
                                         VARIANT_FALSE) == S_OK;
    });
    Note("copy out " + path, isDone);
}

void DisastersTest::List() {
    LONG_PTR handle = 0;
    LONG count = -1;
    const char* const folder = Below(2) == 0 ? "<Work>\\" : "<Corp>\\";
    api_->DPFindInit(&handle, Text(folder), Text(L".kra"), APP_SKEIN, &count);
    for (LONG index = 0; index < count; ++index) {
        OutText path;
        api_->DPFindNext(handle, index, path);
    }
    if (handle != 0) api_->DPUnInitialize(handle);
    Note(std::string("list ") + folder, count >= 0);
}

void DisastersTest::Collect(Store& store, const std::string& top, const std::string& prefix) {
    const StoreScope scope(store);
    ASSERT_THAT(scope.Outcome(), IsDone());
    Tree tree;
    ASSERT_THAT(ListTree(store, top, tree), IsDone()) << prefix;
    std::vector<std::string> paths(tree.items.size(), prefix);
    for (std::size_t index = 1; index < tree.items.size(); ++index) {
        const TreeItem& item = tree.items[index];
        // What could be neither finished nor removed.
        if (item.name.starts_with("lda") && item.name.ends_with(".tmp")) continue;
        paths[index] = paths[item.parent] + "\\" + item.name;
        if (item.isFolder) {
            shown_.folders.push_back(paths[index]);
            continue;
        }
        FileBuffer bytes;
        EXPECT_THAT(store.ReadFile(item.path, SourceFate::kStays, bytes), IsDone()) << item.path;
        shown_.files.push_back(
            {paths[index],
             std::string(reinterpret_cast<const char*>(bytes.bytes.get()), bytes.length),
             item.path});
    }
}

void DisastersTest::Look() {
    const auto pause = rest_();
    shown_ = {};
    Collect(FolderStore::Instance(), work_, "<Work>");
    DirectoryStore directory(*items_);
    Collect(directory, base_, "<Corp>");
    for (const OfflineRecord& edit : WaitingEdits()) {
        const std::string bytes(edit.bytes.begin(), edit.bytes.end());
        const std::string entryName = AnsiFromWide(WideFromUtf8(edit.dn));
        // The client has the edit instead of what the entry holds; a client that cannot find what
        // waits, for want of its user's folder, has the entry and edits that.
        const auto entry = std::ranges::find_if(shown_.files, [&](const ShownFile& file) {
            return ComparableDN(file.stored) == ComparableDN(entryName);
        });
        if (entry != shown_.files.end()) {
            shown_.covered.push_back(*entry);
            entry->bytes = bytes;
        } else {
            shown_.rescued += bytes;
        }
    }
    for (const std::string& path : RecoveredFiles()) shown_.rescued += FileBytes(path);
}

void DisastersTest::ExpectNothingLost() {
    Look();
    for (const auto& [id, lines] : expected_) {
        EXPECT_TRUE(IsShown(id, "id=" + id)) << id << " is nowhere\n" << Lately();
        for (const std::string& line : lines) {
            EXPECT_TRUE(IsShown(id, line)) << id << " lost " << line << "\n" << Lately();
        }
    }
    for (const ShownFile& file : shown_.files) {
        EXPECT_TRUE(file.bytes.ends_with(kEnd)) << file.path << " is cut: " << file.bytes << "\n"
                                                << Lately();
    }
}

}  // namespace depot::test
