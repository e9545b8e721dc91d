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

// A session that begins when it is first used.
class LateSession {
public:
    explicit LateSession(IDepotIntrApi& api) : api_(api) {}

    Session& operator()() {
        if (!session_) session_.emplace(api_);
        return *session_;
    }

private:
    IDepotIntrApi& api_;
    std::optional<Session> session_;
};

// The paths of the Skein profiles of a folder, in order.
inline std::vector<std::wstring> List(IDepotIntrApi& api, const std::wstring& folder) {
    LONG_PTR handle = 0;
    LONG count = 0;
    EXPECT_THAT(api.DPFindInit(&handle, Text(folder), Text(L".kra"), APP_SKEIN, &count), IsOk());
    std::vector<std::wstring> paths;
    for (LONG index = 0; index < count; ++index) {
        OutText path;
        EXPECT_THAT(api.DPFindNext(handle, index, path), IsOk());
        paths.push_back(path.Value());
    }
    EXPECT_THAT(api.DPUnInitialize(handle), IsOk());
    std::sort(paths.begin(), paths.end());
    return paths;
}
// The same of files in that folder.
inline std::vector<std::wstring> PathsIn(const std::wstring& folder,
                                         std::vector<std::wstring> files) {
    for (std::wstring& file : files) file.insert(0, folder);
    std::sort(files.begin(), files.end());
    return files;
}

}  // namespace depot::test
