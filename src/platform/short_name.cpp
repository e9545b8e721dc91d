#include "platform/short_name.h"

#include "platform/file_names.h"
#include "platform/file_search.h"
#include "platform/paths.h"
#include "platform/text.h"

namespace depot {

bool IsShortNameOfAnother(const std::string& path) {
    const std::string name = NamePart(path);
    // Every short name that a system makes has one.
    if (FindCharacter(name, '~') == std::string_view::npos) return false;
    WIN32_FIND_DATAA found = {};
    FileSearch search(path);
    // The name of what is passed over is none that the path can be.
    return search.Next(found) ? !IsSameFileName(name, found.cFileName) : search.UnsafeNames() > 0;
}

}  // namespace depot
