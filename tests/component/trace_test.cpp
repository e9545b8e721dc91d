// The trace of the interface calls, as support staff read it.
#include <gmock/gmock.h>

#include "component/component.h"
#include "platform/local_file.h"
#include "platform/trace.h"
#include "support/results.h"

namespace depot::test {
namespace {

using testing::HasSubstr;
using testing::Not;

class ComponentTraceTest : public ComponentTest {
protected:
    ComponentTraceTest() {
        DefineDepot("Work");
        folder_.MakeFile("Work\\a.kre", "[S]\nK=a secret\n");
        SetEnvironmentVariableA(kTraceVariable, path_.c_str());
    }
    ~ComponentTraceTest() override { SetEnvironmentVariableA(kTraceVariable, nullptr); }

    std::string Written() const {
        const auto bytes = ReadLocalFile(path_);
        return bytes ? std::string(bytes->begin(), bytes->end()) : "(no file)";
    }

    const std::string path_ = folder_.At("trace.txt");
};

TEST_F(ComponentTraceTest, EveryCallLeavesALineWithItsResult) {
    {
        const Library traced(CopyComponent(folder_, "qdirsvc.dll"));
        const Com<IDepotIntrApi> api = traced.CreateApi();
        Session session(*api);
        EXPECT_THAT(api->DPLoadFile(session.Address(), Text("<Work>\\a.kre")), IsOk());
        OutText value;
        EXPECT_THAT(
            api->DPGetProfileString(session, Text("S"), Text("K"), Text("other"), value, 100),
            IsOk());
        EXPECT_THAT(api->DPFileExists(session, Text("<Work>\\missing.kre")), IsRefused());
        EXPECT_THAT(api->DPGetDefaultDPPath(session, nullptr), IsRefused());
        EXPECT_THAT(api->DPFindInit(nullptr, nullptr, nullptr, APP_SKEIN, nullptr), IsRefused());
    }
    const std::string written = Written();
    for (const char* line :
         {" DPInitialize ", " DPLoadFile ", " DPGetProfileString ", " DPFileExists ",
          " DPGetDefaultDPPath ", " DPFindInit ", " DPUnInitialize "}) {
        EXPECT_THAT(written, HasSubstr(line));
    }
    EXPECT_EQ(7, std::count(written.begin(), written.end(), '\n'));
    EXPECT_THAT(written, Not(HasSubstr("secret")));
    EXPECT_THAT(written, Not(HasSubstr("other")));
}

TEST_F(ComponentTraceTest, ComponentLoadedBeforeTheVariableIsSetTracesNothing) {
    const Session session(*api_);
    EXPECT_EQ("(no file)", Written());
}

}  // namespace
}  // namespace depot::test
