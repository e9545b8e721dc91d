// A world with a depot in a directory and copies that are kept of its files.
#pragma once

#include <string>
#include <vector>

#include "depotctl/tool.h"
#include "platform/local_file.h"
#include "support/kept_world.h"

namespace depot::test {

// What the program says of all copies, of what became of the entry of the only one, and of one that
// it is to bring back.
inline nlohmann::json List(bool checks = false) {
    std::vector<std::string> arguments = {"recovered", "--json"};
    if (checks) arguments.emplace_back("--check");
    const ToolRun run = RunTool(arguments);
    EXPECT_EQ(ExitCode::kDone, run.exitCode) << run.errors;
    return run.Json();
}
inline std::string Now() {
    return List(true)[0].value("now", "(none)");
}
inline ToolRun Restore(const std::string& name, std::vector<std::string> options = {}) {
    options.insert(options.begin(), {"recovered", "restore", name});
    return RunTool(options);
}

// Copies have names here, as users have them.
class RecoveredTest : public ToolTest {
protected:
    static std::string KeepOf(const std::string& ours, const RecoveredOrigin& origin,
                              const std::string& name = "office.kre") {
        return NamePart(KeptWorld::KeepOf(ours, origin, name));
    }
    std::string Keep(const std::string& ours = kKeptOurs) const {
        return NamePart(world_.Keep(ours));
    }
    // Whether the copy is still there, with what is known of it.
    static bool IsKept(const std::string& name) {
        return KeptWorld::IsKept(RecoveredFolder() + "\\" + name);
    }

    void ExpectRefused(const ToolRun& run, const std::string& text, const std::string& name,
                       const std::string& entry) const {
        EXPECT_EQ(ExitCode::kRefused, run.exitCode);
        EXPECT_THAT(run.errors, testing::HasSubstr(text));
        EXPECT_TRUE(IsKept(name));
        EXPECT_EQ(entry, world_.Entry());
    }
    // The only copy comes back nowhere but where it is told to go.
    void ExpectNoWay(const std::string& name, const std::string& why) const {
        EXPECT_THAT(List(true), testing::SizeIs(1));
        const ToolRun run = Restore(name, {"--replace"});
        EXPECT_EQ(ExitCode::kRefused, run.exitCode);
        EXPECT_THAT(run.errors,
                    testing::AllOf(testing::HasSubstr(why), testing::HasSubstr("--to")));
        EXPECT_THAT(RecoveredFiles(), testing::SizeIs(1));
        EXPECT_EQ(kKeptBase, world_.Entry());
        EXPECT_EQ(ExitCode::kDone, Restore(name, {"--to", "<Work>\\back.kre"}).exitCode);
        EXPECT_EQ(kKeptOurs, Bytes("work\\back.kre"));
        EXPECT_THAT(RecoveredFiles(), testing::IsEmpty());
    }

    KeptWorld world_{key_};
};

}  // namespace depot::test
