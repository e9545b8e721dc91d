// The trace of the dialog's own library.
#include <gmock/gmock.h>

#include "depotbrowser/browse_fixture.h"
#include "platform/trace.h"
#include "platform/wide_text.h"

namespace depot::test {
namespace {

class BrowserTraceTest : public testing::Test {
protected:
    ~BrowserTraceTest() override { SetEnvironmentVariableA(kTraceVariable, nullptr); }

    ScratchFolder folder_;
    const ComApartment apartment_;
};

TEST_F(BrowserTraceTest, LibraryBeginsATraceWhenItIsLoaded) {
    ASSERT_EQ(nullptr, GetModuleHandleA("DepotBrowser.dll")) << "it is loaded already";
    SetEnvironmentVariableA(kTraceVariable, folder_.At("trace.txt").c_str());
    {
        const BrowserLibrary library;
        EXPECT_TRUE(Exists(folder_.At("trace.txt")));
        // The library has it open.
        EXPECT_EQ(nullptr, OwnFile(CreateFileA(folder_.At("trace.txt").c_str(), GENERIC_READ, 0,
                                               nullptr, OPEN_EXISTING, 0, nullptr)));
    }
    EXPECT_NE(nullptr, OwnFile(CreateFileA(folder_.At("trace.txt").c_str(), GENERIC_READ, 0,
                                           nullptr, OPEN_EXISTING, 0, nullptr)))
        << "the trace ends with the library";
}

TEST_F(BrowserTraceTest, LibraryWorksWithATraceThatCannotBeWritten) {
    SetEnvironmentVariableA(kTraceVariable, folder_.At("none\\trace.txt").c_str());
    const BrowserLibrary library;
    EXPECT_NE(nullptr, CreateBrowseObject());
}

// Set before the library is loaded.
class TraceFile {
protected:
    TraceFile() { SetEnvironmentVariableA(kTraceVariable, Path().c_str()); }
    ~TraceFile() { SetEnvironmentVariableA(kTraceVariable, nullptr); }
    std::string Path() const { return traceFolder_.At("trace.txt"); }

private:
    const ScratchFolder traceFolder_;
};

class TracedBrowseTest : public TraceFile, public BrowseTest {};

TEST_F(TracedBrowseTest, DialogTracesWhatItsListingsLeaveOut) {
    MakeFile("a.kra");
    const UniqueHandle file =
        OwnFile(CreateFileW((WideFromAnsi(At("")) + L"\u0E01.kra").c_str(), GENERIC_WRITE, 0,
                            nullptr, CREATE_NEW, FILE_ATTRIBUTE_NORMAL, nullptr));
    ASSERT_NE(nullptr, file.get());
    Show([](const OpenBrowser& browser) {
        browser.WaitForRow(L"a.kra");
        browser.Press(VK_ESCAPE);
    });
    EXPECT_THAT(FileBytes(Path()), testing::HasSubstr(" left out "));
}

}  // namespace
}  // namespace depot::test
