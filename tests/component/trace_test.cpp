// The trace of the interface calls, as support staff read it.
#include <gmock/gmock.h>

#include "component/component.h"
#include "platform/local_file.h"
#include "platform/trace.h"

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
        EXPECT_EQ(S_OK, api->DPLoadFile(session.Address(), Text("<Work>\\a.kre")));
        OutText value;
        EXPECT_EQ(S_OK, api->DPGetProfileString(session, Text("S"), Text("K"), Text("other"), value,
                                                100));
        EXPECT_EQ(S_FALSE, api->DPFileExists(session, Text("<Work>\\missing.kre")));
        EXPECT_EQ(S_FALSE, api->DPGetDefaultDPPath(session, nullptr));
        EXPECT_EQ(S_FALSE, api->DPFindInit(nullptr, nullptr, nullptr, APP_SKEIN, nullptr));
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
