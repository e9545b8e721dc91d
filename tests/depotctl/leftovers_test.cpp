// What an installation left behind, and its removal.
#include "depotctl/tool.h"

namespace depot::test {
namespace {

using testing::HasSubstr;
using testing::Not;

constexpr char kClass[] = "Software\\Classes\\CLSID\\{38A373C9-E31B-4505-A763-B14081A1332B}";
constexpr char kName[] = "Software\\Classes\\DepotIntr.DepotIntrApi";
constexpr char kOwn[] = "Software\\Quillon\\DepotIntr";
constexpr char kSource[] = "SYSTEM\\CurrentControlSet\\Services\\EventLog\\Application\\DepotIntr";

class LeftoversTest : public ToolTest {
protected:
    static std::string State(const nlohmann::json& rows, const std::string& place) {
        for (const auto& row : rows) {
            if (row["place"] == place) return row["state"];
        }
        return "";
    }
    static nlohmann::json Find(const std::vector<std::string>& options = {}) {
        std::vector<std::string> arguments = {"leftovers", "--json"};
        arguments.insert(arguments.end(), options.begin(), options.end());
        const ToolRun run = RunTool(arguments);
        EXPECT_EQ(ExitCode::kDone, run.exitCode) << run.errors;
        return run.Json();
    }
    void Register(const std::string& library) const {
        class_.Text("InprocServer32", "", library);
        name_.Text("CLSID", "", "{38A373C9-E31B-4505-A763-B14081A1332B}");
    }
    static bool HasKey(HKEY root, const std::string& path) {
        HKEY key = nullptr;
        if (RegOpenKeyExA(root, path.c_str(), 0, KEY_READ, &key) != ERROR_SUCCESS) return false;
        RegCloseKey(key);
        return true;
    }

    const ScratchKey class_{HKEY_CURRENT_USER, kClass};
    const ScratchKey name_{HKEY_CURRENT_USER, kName};
    const ScratchKey own_{HKEY_LOCAL_MACHINE, kOwn};
    const ScratchKey source_{HKEY_LOCAL_MACHINE, kSource};
};

TEST_F(LeftoversTest, RegistrationWithoutItsLibraryIsListedAndRemovedOnRequest) {
    Register(folder_.At("DepotIntr.dll"));
    const std::string place = std::string("HKEY_CURRENT_USER\\") + kClass;
    EXPECT_EQ("left over", State(Find(), place));
    EXPECT_EQ("left over", State(Find(), std::string("HKEY_CURRENT_USER\\") + kName));
    EXPECT_TRUE(HasKey(HKEY_CURRENT_USER, kClass));
    EXPECT_EQ("removed", State(Find({"--remove"}), place));
    EXPECT_FALSE(HasKey(HKEY_CURRENT_USER, kClass) || HasKey(HKEY_CURRENT_USER, kName));
    EXPECT_EQ("", State(Find(), place));
}

TEST_F(LeftoversTest, RegistrationWithItsLibraryIsNoLeftover) {
    Register(folder_.MakeFile("DepotIntr.dll", ""));
    EXPECT_TRUE(Find({"--remove"}).empty());
    EXPECT_TRUE(HasKey(HKEY_CURRENT_USER, kClass));
}

TEST_F(LeftoversTest, InstallersNotesGoAndQuietHostsStay) {
    own_.Text("", "InstallDir", folder_.MakeFolder("gone") + "\\");
    own_.Text("", "Languages", "1");
    own_.Dword("QuietHosts", "batch.exe", 1);
    source_.Text("", "EventMessageFile", folder_.At("DepotIntr.NLS"));
    const auto rows = Find({"--remove"});
    EXPECT_EQ("removed", State(rows, std::string("HKEY_LOCAL_MACHINE\\") + kOwn));
    EXPECT_EQ("removed", State(rows, std::string("HKEY_LOCAL_MACHINE\\") + kSource));
    EXPECT_EQ("stays", State(rows, folder_.At("gone") + "\\"));
    EXPECT_FALSE(HasKey(HKEY_LOCAL_MACHINE, kSource));
    EXPECT_TRUE(HasKey(HKEY_LOCAL_MACHINE, std::string(kOwn) + "\\QuietHosts"));
    EXPECT_TRUE(Holds("gone"));
    EXPECT_EQ("", State(Find(), std::string("HKEY_LOCAL_MACHINE\\") + kOwn));
}

TEST_F(LeftoversTest, DefinitionsStay) {
    const auto rows = Find({"--remove"});
    EXPECT_EQ("stays", State(rows, std::string("HKEY_CURRENT_USER\\") + kDepotsKey));
    EXPECT_EQ(ExitCode::kDone, RunTool({"ls", "<Work>\\"}).exitCode);
    EXPECT_THAT(RunTool({"leftovers"}).output, HasSubstr("  2 definitions of depots: stays, "));
}

TEST_F(LeftoversTest, KeptFilesGoOnlyOnRequestAndNeverWithEditsThatWait) {
    char base[MAX_PATH] = {};
    ASSERT_NE(0u, GetEnvironmentVariableA("LOCALAPPDATA", base, sizeof(base)));
    const std::string kept = std::string(base) + "\\Quillon\\Farrow\\Offline";
    const std::string place = kept + "\\one";
    for (const std::string& path :
         {std::string(base) + "\\Quillon", std::string(base) + "\\Quillon\\Farrow", kept, place}) {
        CreateDirectoryA(path.c_str(), nullptr);
    }
    const auto make = [&](const char* name) {
        const HANDLE file = CreateFileA((place + "\\" + name).c_str(), GENERIC_WRITE, 0, nullptr,
                                        CREATE_ALWAYS, 0, nullptr);
        CloseHandle(file);
    };
    make("a.file");
    make("b.edit");
    EXPECT_EQ("stays", State(Find({"--remove", "--kept-files"}), kept));
    EXPECT_TRUE(Exists(place + "\\b.edit"));
    DeleteFileA((place + "\\b.edit").c_str());
    EXPECT_EQ("stays", State(Find({"--remove"}), kept));
    EXPECT_TRUE(Exists(place + "\\a.file"));
    EXPECT_EQ("removed", State(Find({"--remove", "--kept-files"}), kept));
    EXPECT_FALSE(Exists(kept));
}

}  // namespace
}  // namespace depot::test
