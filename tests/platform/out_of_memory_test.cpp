// Memory that runs out at each allocation in turn: nothing is left behind, and what promises no
// exception keeps its promise.
#include <gtest/gtest.h>

#include "platform/error_text.h"
#include "platform/paths.h"
#include "platform/pointer_array.h"
#include "platform/private_file.h"
#include "platform/registry_key.h"
#include "platform/temp_file.h"
#include "platform/text.h"
#include "platform/trace.h"
#include "platform/wide_text.h"
#include "support/failing_memory.h"
#include "support/scratch.h"
#include "support/working_files.h"

namespace depot {
namespace {

using test::ExpectEachFailureThrows;
using test::FailingMemory;

// Longer than what a text holds without memory of its own.
const std::string longText(100, 'x');

TEST(OutOfMemoryTest, TextsThatCannotBeMadeThrow) {
    ExpectEachFailureThrows([] { CollapseBackslashes(longText + "\\\\" + longText); });
    ExpectEachFailureThrows([] { ReplaceAllNoCase(longText, "x", "yy"); });
    ExpectEachFailureThrows([] { ToLower(longText); });
    ExpectEachFailureThrows([] { WideFromUtf8(longText); });
    ExpectEachFailureThrows([] { AnsiFromWide(WideFromAnsi(longText)); });
    ExpectEachFailureThrows([] { JoinPath(longText, longText); });
    ExpectEachFailureThrows([] {
        std::string text;
        FormatErrorText(ERROR_FILE_NOT_FOUND, longText.c_str(), nullptr, &text, nullptr);
    });
}

TEST(OutOfMemoryTest, RegistryReadsThatFailThrowAndCloseTheirKeys) {
    const test::ScratchKey key(HKEY_CURRENT_USER, "Software\\DepotTests\\OutOfMemory");
    key.Text(longText, "Value", longText);
    ExpectEachFailureThrows([&] {
        const auto opened = RegistryKey::Open(key.Root(), key.Path());
        EXPECT_EQ(longText, opened->SubkeyAt(0).name);
        EXPECT_EQ(longText, opened->OpenSubkey(longText)->ReadString("Value"));
    });
}

TEST(OutOfMemoryTest, ArrayThatCannotGrowDropsTheNewElement) {
    int numbers[3] = {};
    PointerArray<int> array;
    array.Add(&numbers[0]);
    array.Add(&numbers[1]);
    {
        const FailingMemory memory(1);
        EXPECT_FALSE(array.Add(&numbers[2]));
        EXPECT_TRUE(memory.RanOut());
    }
    EXPECT_EQ(2u, array.Count());
    EXPECT_EQ(2u, array.Capacity());
    EXPECT_EQ(&numbers[1], array.At(1));
    EXPECT_TRUE(array.Add(&numbers[2]));
    EXPECT_EQ(&numbers[2], array.At(2));
}

TEST(OutOfMemoryTest, TemporaryFileThatCannotBeNamedIsNotLeft) {
    const test::CleanWorkingFiles clean;
    ExpectEachFailureThrows([] {
        const std::string name = MakeTempFileName();
        DeleteFileA(name.c_str());
    });
    EXPECT_TRUE(test::WorkingCopies().empty());
}

TEST(OutOfMemoryTest, TraceThatCannotBeWrittenLetsTheOperationContinue) {
    const test::ScratchFolder folder;
    SetEnvironmentVariableA(kTraceVariable, folder.At("trace.txt").c_str());
    StartTrace();
    const TraceSpan span("DPLoadFile", longText);
    test::ExpectNoFailureThrows([&] { span.EndWithCode(0); });
    StopTrace();
    SetEnvironmentVariableA(kTraceVariable, nullptr);
    EXPECT_NE("", test::FileBytes(folder.At("trace.txt")));
}

}  // namespace
}  // namespace depot
