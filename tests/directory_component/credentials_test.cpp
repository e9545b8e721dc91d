// The whole way of credentials: a client, the component, the dialog's library, a person at the
// keyboard, a real server, and what processes share.
#include <deque>

#include "component/component.h"
#include "depotbrowser/dialog_user.h"
#include "directory_component/registered_dialog.h"
#include "support/child_process.h"
#include "support/component_depots.h"
#include "support/directory_fixture.h"
#include "support/import_patch.h"
#include "support/results.h"
#include "support/test_folders.h"
#include "support/working_files.h"

namespace depot::test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

constexpr char kFile[] = "<Corp>\\office.kra";

// A person who answers each credentials dialog with the next script, and who cancels a dialog that
// nobody expects: no test waits for one.
class DialogWatch {
public:
    explicit DialogWatch(std::deque<DialogUser::Script> scripts = {})
        : scripts_(std::move(scripts)), thread_([this] { Run(); }) {
        while (!running_) Sleep(1);
    }
    ~DialogWatch() {
        ending_ = true;
        thread_.join();
        EXPECT_TRUE(scripts_.empty()) << "a dialog that was expected did not appear";
    }
    DialogWatch(const DialogWatch&) = delete;
    DialogWatch& operator=(const DialogWatch&) = delete;

    int Shown() const { return shown_; }

private:
    static BOOL CALLBACK Examine(HWND window, LPARAM found) {
        DWORD process = 0;
        GetWindowThreadProcessId(window, &process);
        if (process != GetCurrentProcessId() || !IsWindowVisible(window) ||
            GetDlgItem(window, CONTROL_SERVER) == nullptr) {
            return TRUE;
        }
        *reinterpret_cast<HWND*>(found) = window;
        return FALSE;
    }

    void Run() {
        GetDesktopWindow();
        running_ = true;
        for (HWND last = nullptr; !ending_; Sleep(2)) {
            HWND window = nullptr;
            EnumWindows(&Examine, reinterpret_cast<LPARAM>(&window));
            if (window != nullptr && window != last) Answer(window);
            last = window;
        }
    }

    void Answer(HWND window) {
        ++shown_;
        if (scripts_.empty()) {
            PostMessageA(window, WM_COMMAND, IDCANCEL, 0);
            return;
        }
        const DialogUser::Script script = std::move(scripts_.front());
        scripts_.pop_front();
        EXPECT_TRUE(Eventually([&] { return GetForegroundWindow() == window; }));
        script(OpenDialog(window));
        if (Eventually([&] { return !IsWindow(window); })) return;
        ADD_FAILURE() << "the dialog is still open";
        PostMessageA(window, WM_COMMAND, IDCANCEL, 0);
    }

    std::deque<DialogUser::Script> scripts_;
    std::atomic<int> shown_ = 0;
    std::atomic<bool> ending_ = false;
    std::atomic<bool> running_ = false;
    std::thread thread_;
};

DialogUser::Script Type(const std::string& userName, const std::string& password) {
    return [=](const OpenDialog& dialog) {
        dialog.WaitForFocus(CONTROL_USER);
        dialog.Type(Wide(userName));
        dialog.WaitForText(CONTROL_USER, Wide(userName));
        dialog.Press(VK_TAB);
        dialog.WaitForFocus(CONTROL_PASSWORD);
        dialog.Type(Wide(password));
        dialog.WaitForText(CONTROL_PASSWORD, Wide(password));
        dialog.Press(VK_RETURN);
    };
}

// Types into the password field, where a dialog that knows the name begins.
DialogUser::Script TypePassword(const std::string& password) {
    return [=](const OpenDialog& dialog) {
        dialog.WaitForFocus(CONTROL_PASSWORD);
        dialog.Type(Wide(password));
        dialog.WaitForText(CONTROL_PASSWORD, Wide(password));
        dialog.Press(VK_RETURN);
    };
}

DialogUser::Script Cancel() {
    return [](const OpenDialog& dialog) { dialog.Press(VK_ESCAPE); };
}

std::wstring ReadFileThrough(IDepotIntrApi& api, const std::string& path) {
    LONG_PTR session = 0;
    EXPECT_THAT(api.DPLoadFile(&session, Text(path)), IsOk());
    OutText value;
    EXPECT_THAT(
        api.DPGetProfileString(session, Text("S"), Text("K"), Text("(default)"), value, 100),
        IsOk());
    EXPECT_THAT(api.DPUnInitialize(session), IsOk());
    return value.Value();
}

// Another process of the same user reads and changes the file. The exit code tells what happened.
int EditInAnotherProcess(const Arguments& arguments) {
    const Apartment apartment;
    const BoxLog boxes;
    const DialogWatch dialogs;
    const Com<IDepotIntrApi> api = CreateApi();
    LONG_PTR session = 0;
    if (!api || api->DPLoadFile(&session, Text(kFile)) != S_OK) return 1;
    api->DPSetProfileString(session, Text("S"), Text("K"), Text(arguments.at(0)));
    api->DPUnInitialize(session);
    if (dialogs.Shown() != 0) return 2;
    return boxes.Boxes().empty() ? 0 : 3;
}
const RoleRegistration editInAnotherProcess("edit-directory-file", &EditInAnotherProcess);

class CredentialsTest : public ComponentTest {
protected:
    CredentialsTest() {
        DefineAskingDepot(depots_, "Corp", server_.Port(), base_);
        server_.AddFile("office.kra", base_, "[S]\r\nK=old\r\n");
    }
    ~CredentialsTest() override { ForgetServer(server_.Port()); }

    // Reads the file in a session of its own.
    std::wstring Value(const std::string& path = kFile) { return ReadFileThrough(*api_, path); }

    std::string Contents() { return DirectoryTestFolder(server_, base_, {}).Bytes("office.kra"); }

    DirectoryInfo& Shared() { return *block_.Access(); }

    DirectoryServer& server_ = SharedServer();
    std::string base_ = NewFolder();
    DirectoryInfoBlock block_{ServerKey("127.0.0.1", server_.Port())};
    BoxLog boxes_;
    CleanWorkingFiles clean_;
};

TEST_F(CredentialsTest, RightPasswordTypedOnceServesEveryLaterSessionAndLocation) {
    const RegisteredDialog dialog;
    DefineAskingDepot(depots_, "Twin", server_.Port(), base_);
    {
        const DialogWatch watch({Type(kEditor, kEditorPassword)});
        EXPECT_EQ(L"old", Value());
        EXPECT_EQ(1, watch.Shown());
    }
    const DialogWatch nobody;
    EXPECT_EQ(L"old", Value());
    EXPECT_EQ(L"old", Value("<Twin>\\office.kra"));
    EXPECT_EQ(0, nobody.Shown());
    EXPECT_STREQ(kEditor, Shared().userName);
    EXPECT_STREQ(kEditorPassword, Shared().password);
    EXPECT_EQ(0u, Shared().noPrompt);
    EXPECT_THAT(boxes_.Boxes(), IsEmpty());
}

TEST_F(CredentialsTest, DialogShowsTheFormOfNamesThatTheServerWants) {
    const RegisteredDialog dialog;
    std::wstring example;
    const DialogWatch watch({[&example](const OpenDialog& shown) {
        example = shown.Text(CONTROL_EXAMPLE);
        Type(kEditor, kEditorPassword)(shown);
    }});
    EXPECT_EQ(L"old", Value());
    EXPECT_EQ(L"The server wants names such as cn=Mary Walker,dc=farrow,dc=test", example);
}

TEST_F(CredentialsTest, TypedCredentialsAreThoseThatAFileIsStoredWith) {
    const RegisteredDialog dialog;
    const DialogWatch watch({Type(kEditor, kEditorPassword)});
    {
        Session session(*api_);
        EXPECT_THAT(api_->DPLoadFile(session.Address(), Text(kFile)), IsOk());
        EXPECT_THAT(api_->DPSetProfileString(session, Text("S"), Text("K"), Text("new")), IsOk());
        server_.Mark();
    }
    EXPECT_EQ("[S]\r\nK=new\r\n", Contents());
    EXPECT_THAT(server_.Log(), testing::HasSubstr("BIND dn=\"" + std::string(kEditor) + "\""));
    EXPECT_EQ(1, watch.Shown());
}

TEST_F(CredentialsTest, AnotherProcessUsesWhatWasTypedWithoutAQuestion) {
    const RegisteredDialog dialog;
    const DialogWatch watch({Type(kEditor, kEditorPassword)});
    EXPECT_EQ(L"old", Value());
    const ChildProcess other("edit-directory-file", {"theirs"});
    EXPECT_EQ(0, other.ExitCode());
    EXPECT_EQ("[S]\r\nK=theirs\r\n", Contents());
}

TEST_F(CredentialsTest, WrongPasswordIsAskedForAgainUntilItIsRight) {
    const RegisteredDialog dialog;
    const DialogWatch watch({Type(kEditor, "wrong"), TypePassword(kEditorPassword)});
    EXPECT_EQ(L"old", Value());
    EXPECT_EQ(2, watch.Shown());
    EXPECT_THAT(boxes_.Texts(), ElementsAre(MessageFor(LDAP_INVALID_CREDENTIALS)));
    EXPECT_THAT(Shared().lastError, IsCode(LDAP_SUCCESS));
}

TEST_F(CredentialsTest, CancelledDialogGivesAFileWithoutValuesAndNoSecondPrompt) {
    const RegisteredDialog dialog;
    const DialogWatch watch({Cancel()});
    EXPECT_EQ(L"(default)", Value());
    EXPECT_EQ(1, watch.Shown());
    EXPECT_EQ(1u, Shared().noPrompt);
    EXPECT_THAT(Shared().lastError, IsCode(LDAP_USER_CANCELLED));
    EXPECT_THAT(boxes_.Texts(), ElementsAre(MessageFor(LDAP_USER_CANCELLED)));
    EXPECT_EQ(L"(default)", Value());
    EXPECT_EQ(1, watch.Shown());
    EXPECT_THAT(boxes_.Texts(), ElementsAre(MessageFor(LDAP_USER_CANCELLED)));
    EXPECT_THAT(WorkingCopies(), IsEmpty());
}

TEST_F(CredentialsTest, CancelInOneProcessCountsInEveryOther) {
    const RegisteredDialog dialog;
    const DialogWatch watch({Cancel()});
    EXPECT_EQ(L"(default)", Value());
    const ChildProcess other("edit-directory-file", {"theirs"});
    // The edit of a file that was never fetched is refused without a path: that one box appears.
    EXPECT_EQ(3, other.ExitCode());
    EXPECT_EQ("[S]\r\nK=old\r\n", Contents());
}

TEST_F(CredentialsTest, TypedCredentialsServeWhilePromptingIsOff) {
    const RegisteredDialog dialog;
    {
        const DialogWatch watch({Type(kEditor, kEditorPassword)});
        EXPECT_EQ(L"old", Value());
    }
    Shared().noPrompt = 1;
    const DialogWatch nobody;
    EXPECT_EQ(L"old", Value());
    EXPECT_EQ(0, nobody.Shown());
    EXPECT_THAT(boxes_.Boxes(), IsEmpty());
}

TEST_F(CredentialsTest, DialogThatIsNotRegisteredCountsAsCancelled) {
    const DialogWatch watch;
    EXPECT_EQ(L"(default)", Value());
    EXPECT_EQ(0, watch.Shown());
    EXPECT_EQ(1u, Shared().noPrompt);
    EXPECT_THAT(Shared().lastError, IsCode(LDAP_USER_CANCELLED));
    EXPECT_THAT(boxes_.Texts(), ElementsAre(MessageFor(LDAP_USER_CANCELLED)));
    EXPECT_EQ(L"(default)", Value());
    EXPECT_THAT(boxes_.Texts(), ElementsAre(MessageFor(LDAP_USER_CANCELLED)));
}

TEST_F(CredentialsTest, DialogIsFilledFromTheLocation) {
    depots_.Text("Corp", "Username1", kEditor);
    depots_.Text("Corp", "Password1", "outdated");
    const RegisteredDialog dialog;
    const DialogWatch watch({[](const OpenDialog& shown) {
        EXPECT_EQ(L"127.0.0.1", shown.Text(CONTROL_SERVER));
        EXPECT_EQ(Wide(kEditor), shown.Text(CONTROL_USER));
        EXPECT_EQ(L"outdated", shown.Text(CONTROL_PASSWORD));
        shown.Press(VK_ESCAPE);
    }});
    EXPECT_EQ(L"(default)", Value());
    EXPECT_EQ(1, watch.Shown());
}

std::vector<std::string> notedBoxes;

int WINAPI NoteBox(HWND, LPCSTR text, LPCSTR, UINT) {
    notedBoxes.emplace_back(text);
    return IDOK;
}

TEST_F(CredentialsTest, NoPromptAppearsWhileTheComponentIsUnloaded) {
    notedBoxes.clear();
    const RegisteredDialog dialog;
    const std::string guest = "cn=guest," + std::string(kSuffix);
    server_.Apply("dn: " + guest +
                  "\nobjectClass: person\ncn: guest\nsn: guest\nuserPassword: one\n");
    const DialogWatch watch({Type(guest, "one")});
    const ScratchFolder folder;
    {
        const Library library(CopyComponent(folder, "qdirsvc.dll"));
        // A box would wait for the watch, and that for the lock under which libraries go. Its
        // place goes with the library.
        static_cast<void>(std::make_unique<ImportPatch<decltype(&MessageBoxA)>>(
                              "MessageBoxA", &NoteBox, library.Module())
                              .release());
        const Com<IDepotIntrApi> api = library.CreateApi();
        LONG_PTR left = 0;
        ASSERT_THAT(api->DPLoadFile(&left, Text(kFile)), IsOk());
        EXPECT_THAT(api->DPSetProfileString(left, Text("S"), Text("K"), Text("new")), IsOk());
        // The session has to log on once more, and what was typed is wrong by now.
        server_.Apply("dn: " + guest +
                      "\nchangetype: modify\nreplace: userPassword\nuserPassword: two\n");
        server_.Stop();
        server_.Continue();
    }
    EXPECT_EQ(1, watch.Shown());
    EXPECT_THAT(notedBoxes, IsEmpty());
    EXPECT_EQ("[S]\r\nK=old\r\n", Contents());
    ASSERT_THAT(RecoveredFiles(), testing::SizeIs(1));
    EXPECT_EQ("[S]\r\nK=new\r\n", FileBytes(RecoveredFiles().front()));
    // Other processes go on asking.
    EXPECT_EQ(0u, Shared().noPrompt);
}

}  // namespace
}  // namespace depot::test
