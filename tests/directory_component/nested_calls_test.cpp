// Calls that come while another call of the same session shows a message: the message lets the
// client's own windows work on.
#include "component/component.h"
#include "support/component_depots.h"
#include "support/directory_fixture.h"
#include "support/results.h"
#include "support/working_files.h"

namespace depot::test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

constexpr UINT kAct = WM_APP + 1;

// A window of the client that acts as soon as messages are handled.
class ClientWindow {
public:
    explicit ClientWindow(std::function<void()> act) : act_(std::move(act)) {
        window_ =
            CreateWindowA("STATIC", "", 0, 0, 0, 0, 0, HWND_MESSAGE, nullptr, nullptr, nullptr);
        SetWindowLongPtrA(window_, GWLP_USERDATA, reinterpret_cast<LONG_PTR>(this));
        SetWindowLongPtrA(window_, GWLP_WNDPROC, reinterpret_cast<LONG_PTR>(&Receive));
        PostMessageA(window_, kAct, 0, 0);
    }
    ~ClientWindow() { DestroyWindow(window_); }
    ClientWindow(const ClientWindow&) = delete;
    ClientWindow& operator=(const ClientWindow&) = delete;

    int Acted() const { return acted_; }

private:
    static LRESULT CALLBACK Receive(HWND window, UINT message, WPARAM first, LPARAM second) {
        auto* const self =
            reinterpret_cast<ClientWindow*>(GetWindowLongPtrA(window, GWLP_USERDATA));
        if (message != kAct) return DefWindowProcA(window, message, first, second);
        ++self->acted_;
        self->act_();
        return 0;
    }

    std::function<void()> act_;
    int acted_ = 0;
    HWND window_ = nullptr;
};

class NestedCallsTest : public ComponentTest {
protected:
    NestedCallsTest() {
        DefineDirectoryDepot(depots_, "Corp", server_.Port(), kSuffix);
        server_.AddFile("a.kra", kSuffix, "[S]\r\nK=old\r\n");
        EXPECT_THAT(api_->DPLoadFile(&session_, Text("<Corp>\\a.kra")), IsOk());
        EXPECT_THAT(api_->DPSetProfileString(session_, Text("S"), Text("K"), Text("new")), IsOk());
        server_.Stop();
    }

    DirectoryServer server_;
    LONG_PTR session_ = 0;
    BoxLog boxes_;
    CleanWorkingFiles clean_;
};

TEST_F(NestedCallsTest, SessionThatEndsWhileABoxIsOpenIsDestroyedWhenItsCallReturns) {
    HRESULT nested = E_FAIL;
    const ClientWindow window([&] { nested = api_->DPUnInitialize(session_); });
    api_->DPFlushFile(session_);
    EXPECT_EQ(1, window.Acted());
    EXPECT_THAT(nested, IsOk());
    EXPECT_THAT(api_->DPFlushFile(session_), IsRefused());
    // The edit was kept, once.
    EXPECT_THAT(RecoveredFiles(), SizeIs(1));
    EXPECT_THAT(WorkingCopies(), IsEmpty());
}

TEST_F(NestedCallsTest, OtherCallsOnTheBusySessionFailAndLeaveItAlone) {
    LONG_PTR loading = session_;
    HRESULT load = E_FAIL, write = E_FAIL;
    const ClientWindow window([&] {
        load = api_->DPLoadFile(&loading, Text("<Corp>\\b.kra"));
        write = api_->DPSetProfileString(session_, Text("S"), Text("K"), Text("nested"));
    });
    api_->DPFlushFile(session_);
    EXPECT_EQ(1, window.Acted());
    EXPECT_THAT(load, IsRefused());
    EXPECT_EQ(session_, loading);
    EXPECT_THAT(write, IsRefused());
    ASSERT_THAT(RecoveredFiles(), SizeIs(1));
    EXPECT_EQ("[S]\r\nK=new\r\n", FileBytes(RecoveredFiles().front()));
    EXPECT_THAT(api_->DPUnInitialize(session_), IsOk());
}

TEST_F(NestedCallsTest, OtherSessionsWorkMeanwhile) {
    DefineDepot("Local", "Local");
    folder_.MakeFile("Local\\x.kra", "[S]\r\nK=local\r\n");
    std::wstring value;
    const ClientWindow window([&] {
        Session other(*api_);
        EXPECT_THAT(api_->DPLoadFile(other.Address(), Text("<Local>\\x.kra")), IsOk());
        value = Read(other, L"S", L"K");
    });
    api_->DPFlushFile(session_);
    EXPECT_EQ(1, window.Acted());
    EXPECT_EQ(L"local", value);
    EXPECT_THAT(api_->DPUnInitialize(session_), IsOk());
}

}  // namespace
}  // namespace depot::test
