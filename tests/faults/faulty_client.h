// A client of the component whose system calls fail.
#pragma once

#include <gmock/gmock.h>

#include "component/component.h"
#include "faults/fault_layer.h"
#include "faults/fault_series.h"
#include "support/component_depots.h"
#include "support/results.h"
#include "support/working_files.h"

namespace depot::test {

// The folder depot "Work" and the directory depot "Corp" with the calls of the component behind a
// fault layer. Files of both are made and looked at by the test itself, whose calls never fail. The
// parameter is the name of one of the two; a test that asks for no path of it has none.
class StoreFaultsTest : public ComponentTest, public testing::WithParamInterface<const char*> {
protected:
    static constexpr char kOld[] = "[S]\r\nK=old\r\nL=keep\r\n";
    static constexpr char kNew[] = "[S]\r\nK=new\r\nL=keep\r\n";

    StoreFaultsTest();

    static bool IsFolderDepot() { return GetParam() == std::string("Work"); }
    static std::string Path(const std::string& relative) {
        return "<" + std::string(GetParam()) + ">\\" + relative;
    }

    // What a file of a depot holds; nothing when there is none.
    using Contents = std::optional<std::string>;
    Contents Get(const std::string& displayPath);
    void Put(const std::string& displayPath, const std::string& bytes);
    void Remove(const std::string& displayPath);
    // The names below a folder of the depot.
    std::vector<std::string> NamesIn(const std::string& relative);

    // Every result of a method is one of these two.
    static bool Succeeded(HRESULT result) {
        EXPECT_TRUE(result == S_OK || result == S_FALSE) << std::hex << result;
        return result == S_OK;
    }
    // What the recovered files and the working copies hold, one after another.
    static std::string Kept();
    static std::string Recovered();

    // A new world for a run: no credentials in doubt, nothing left by the last run.
    void Forget() {
        ForgetServer(corp_.server.Port());
        CleanWorkingFiles();
    }

    LONG_PTR Load(const std::string& path);
    // A session whose file holds an edit that is not stored yet.
    LONG_PTR LoadEdited(const std::string& path);
    // The same in a new world, beside another file.
    LONG_PTR LoadEditedBeside(const std::string& path, const std::string& other);
    // Checks that the edit is stored or kept, and that the other file is as it was.
    void ExpectEditKept(const std::string& path, const std::string& other);
    void End(LONG_PTR handle) { EXPECT_THAT(api_->DPUnInitialize(handle), IsOk()); }
    std::wstring ReadValue(LONG_PTR handle);
    // Asks whether a place can be written to.
    bool IsWritable(const std::string& path);

    CleanWorkingFiles clean_;
    const std::string work_ = DefineDepot("Work");
    CorpDepot corp_{depots_};
    FaultLayer layer_{Library::Own().Module()};
};

// A working copy stays only when it holds the only edit; `elsewhere` is what other files hold.
void ExpectNoNeedlessCopies(const std::string& elsewhere);

}  // namespace depot::test
