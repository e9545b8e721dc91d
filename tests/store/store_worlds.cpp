#include "store/store_worlds.h"

#include <algorithm>

#include "platform/wide_text.h"
#include "store/directory_store.h"
#include "store/folder_store.h"
#include "store/offline_store.h"
#include "store/tree.h"
#include "support/directory_fixture.h"
#include "support/directory_kind.h"
#include "support/half_writes.h"
#include "support/memory_store.h"
#include "support/scratch.h"

namespace depot::test {
namespace {

class FolderWorld : public StoreWorld {
public:
    Store& Get() override { return FolderStore::Instance(); }
    std::string Root() const override { return folder_.At("root"); }

    Reason BreakOff() override {
        std::string gone = Root();
        EXPECT_TRUE(MoveFileA(gone.c_str(), folder_.At("gone").c_str()));
        return Reason::kMissing;
    }
    void RefuseWrites() override { full_ = std::make_unique<HalfWrites>(); }
    LeftOut AddWhatIsLeftOut() override {
        const std::wstring name = WideFromAnsi(Root()) + L"\\\u0416\u5b57.kra";
        CloseHandle(CreateFileW(name.c_str(), GENERIC_WRITE, 0, nullptr, CREATE_NEW, 0, nullptr));
        return {0, 1};
    }
    std::vector<std::string> ReasonsToLeaveOut() const override {
        return {"a name that the code page cannot hold"};
    }

private:
    ScratchFolder folder_;
    std::string root_ = folder_.MakeFolder("root");
    std::unique_ptr<HalfWrites> full_;
};

class DirectoryWorld : public StoreWorld {
public:
    DirectoryWorld() { ForgetServer(SharedServer().Port()); }

    Store& Get() override { return store_; }
    std::string Root() const override { return base_; }

    Reason BreakOff() override {
        DirectoryClient& client = items_.Client();
        client.ldap_search_s = [](LDAP*, PCHAR, ULONG, PCHAR, PCHAR*, ULONG,
                                  LDAPMessage** result) -> ULONG {
            *result = nullptr;
            return LDAP_SERVER_DOWN;
        };
        client.ldap_add_s = [](LDAP*, PCHAR, LDAPModA**) -> ULONG { return LDAP_SERVER_DOWN; };
        client.ldap_delete_s = [](LDAP*, PCHAR) -> ULONG { return LDAP_SERVER_DOWN; };
        client.ldap_rename_ext_s = [](LDAP*, const PCHAR, const PCHAR, const PCHAR, INT,
                                      PLDAPControlA*,
                                      PLDAPControlA*) -> ULONG { return LDAP_SERVER_DOWN; };
        return Reason::kUnreachable;
    }
    void RefuseWrites() override {
        DirectoryClient& client = items_.Client();
        client.ldap_add_s = [](LDAP*, PCHAR, LDAPModA**) -> ULONG {
            return LDAP_INSUFFICIENT_RIGHTS;
        };
        client.ldap_modify_s = [](LDAP*, PCHAR, LDAPModA**) -> ULONG {
            return LDAP_INSUFFICIENT_RIGHTS;
        };
    }
    LeftOut AddWhatIsLeftOut() override {
        SharedServer().AddFile("CON", base_, "x");
        SharedServer().Apply("dn: cn=\xd0\x96\xe5\xad\x97.kra," + base_ +
                             "\nobjectClass: quillonFileBinary\ncn: \xd0\x96\xe5\xad\x97.kra\n"
                             "quillonFileContentsBinary: x\n\n");
        // Of neither class: left out, but nothing that would be missed.
        const bool isDomain = SharedKind() == DirectoryKind::kSamba;
        SharedServer().Apply("dn: cn=role.kra," + base_ +
                             "\nobjectClass: " + (isDomain ? "container" : "organizationalRole") +
                             "\ncn: role.kra\n\n");
        return {0, 2};
    }
    std::vector<std::string> ReasonsToLeaveOut() const override {
        return {"a name that the code page cannot hold", kHostileName,
                "neither a folder nor a file"};
    }

protected:
    const CDepotPath& Location() const { return *location_; }
    CLDAPItems& Items() { return items_; }

private:
    std::string base_ = NewFolder();
    std::unique_ptr<CDepotPath> location_ = SharedServer().Location(base_).Clone();
    CLDAPItems items_{location_.get()};
    DirectoryStore store_{items_};
};

// The same of which what is used is kept: no difference while the server is there.
class OfflineWorld : public DirectoryWorld {
public:
    Store& Get() override { return offline_; }

private:
    OfflineLocation kept_{Location()};
    OfflineStore offline_{Items(), kept_};
};

class MemoryWorld : public StoreWorld {
public:
    Store& Get() override { return store_; }
    std::string Root() const override { return MemoryStore::kRoot; }

    Reason BreakOff() override {
        store_.FailWith(Reason::kUnreachable);
        return Reason::kUnreachable;
    }
    void RefuseWrites() override { store_.SetRoom(0); }
    LeftOut AddWhatIsLeftOut() override {
        store_.AddLink("root\\link");
        return {1, 0};
    }
    std::vector<std::string> ReasonsToLeaveOut() const override { return {kFolderLink}; }

private:
    MemoryStore store_;
};

template <class World>
std::unique_ptr<StoreWorld> Make() {
    return std::make_unique<World>();
}

}  // namespace

const WorldKind kWorlds[4] = {{"Folder", &Make<FolderWorld>},
                              {"Directory", &Make<DirectoryWorld>},
                              {"Offline", &Make<OfflineWorld>},
                              {"Memory", &Make<MemoryWorld>}};

Result StoreTest::Write(const std::string& path, const std::string& bytes,
                        ExistingEntries existing) {
    FileBuffer buffer = {static_cast<std::uint32_t>(bytes.size()),
                         std::make_unique<std::uint8_t[]>(bytes.size() + kFileBufferReserve)};
    std::copy(bytes.begin(), bytes.end(), buffer.bytes.get());
    return store_.WriteFile(path, buffer, {existing});
}

std::string StoreTest::AddFile(const std::string& path, const std::string& bytes) {
    EXPECT_THAT(Write(path, bytes, ExistingEntries::kRefuse), IsDone()) << path;
    return path;
}

std::string StoreTest::AddFolder(const std::string& path) {
    EXPECT_THAT(store_.MakeFolder(path, FoldersAbove::kAreMade), IsDone()) << path;
    return path;
}

std::string StoreTest::Bytes(const std::string& path) {
    FileBuffer buffer;
    if (!store_.ReadFile(path, SourceFate::kStays, buffer)) return "(missing)";
    return {reinterpret_cast<const char*>(buffer.bytes.get()), buffer.length};
}

ItemKind StoreTest::KindOf(const std::string& path) {
    ItemKind kind = ItemKind::kOther;
    EXPECT_THAT(store_.Look(path, kind), IsDone()) << path;
    return kind;
}

std::vector<std::string> StoreTest::Names(const std::string& folder) {
    std::vector<std::string> names;
    LeftOut left;
    EXPECT_THAT(store_.List(
                    folder,
                    [&](const StoreItem& item) {
                        names.push_back(item.isFolder ? item.name + "\\" : item.name);
                    },
                    left),
                IsDone());
    std::sort(names.begin(), names.end());
    return names;
}

}  // namespace depot::test
