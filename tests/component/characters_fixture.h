// What the tests of names of many characters share, whatever kind of depot they use.
#pragma once

#include <algorithm>
#include <optional>
#include <string>
#include <vector>

#include "component/component.h"
#include "support/box_log.h"
#include "support/page_names.h"
#include "support/results.h"

namespace depot::test {

inline constexpr char kOldProfile[] = "[S]\r\nK=old\r\n";
inline constexpr char kNewProfile[] = "[S]\r\nK=new\r\n";

// A session, which begins when it is first used, and the names of the code page.
class PageNamesTest : public ComponentTest {
protected:
    Session& Client() {
        if (!session_) session_.emplace(*api_);
        return *session_;
    }

    // The paths of the Skein profiles of a folder, in order.
    std::vector<std::wstring> List(const std::wstring& folder) {
        LONG_PTR handle = 0;
        LONG count = 0;
        EXPECT_THAT(api_->DPFindInit(&handle, Text(folder), Text(L".kra"), APP_SKEIN, &count),
                    IsOk());
        std::vector<std::wstring> paths;
        for (LONG index = 0; index < count; ++index) {
            OutText path;
            EXPECT_THAT(api_->DPFindNext(handle, index, path), IsOk());
            paths.push_back(path.Value());
        }
        EXPECT_THAT(api_->DPUnInitialize(handle), IsOk());
        std::sort(paths.begin(), paths.end());
        return paths;
    }
    // The same of files in that folder.
    static std::vector<std::wstring> PathsIn(const std::wstring& folder,
                                             std::vector<std::wstring> files) {
        for (std::wstring& file : files) file.insert(0, folder);
        std::sort(files.begin(), files.end());
        return files;
    }

    const PageNames names_ = NamesOfThisPage();
    const BoxLog boxes_;

private:
    std::optional<Session> session_;
};

}  // namespace depot::test
