// Names that are made while memory runs out at each allocation in turn.
#include <gtest/gtest.h>

#include "model/copy_name.h"
#include "support/failing_memory.h"

namespace depot {
namespace {

using test::ExpectEachFailureThrows;

TEST(CopyNameMemoryTest, NamesThatCannotBeMadeThrowAndLeaveNothing) {
    const std::string name = std::string(50, 'a') + " (1)(2)(3)" + std::string(50, 'b') + ".kra";
    ExpectEachFailureThrows([&] { MakeDashCopyName(name, 1, "%s - copy%s"); });
    ExpectEachFailureThrows([&] { MakeDashCopyName(name, 2, "%s - copy%s"); });
    ExpectEachFailureThrows([&] { MakePrefixCopyName(name, 2, "Copy %sof %s"); });
    const std::string plain(100, 'p');
    ExpectEachFailureThrows([&] { MakePrefixCopyName(plain, 2, "Copy %sof %s"); });
}

}  // namespace
}  // namespace depot
