#include "fuzz/fuzz_code_page.h"
#include "model/copy_name.h"

using namespace depot;

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    test::FuzzInput input(data, size);
    const test::CodePageScope codePage(test::ChosenCodePage(input));
    const int number = input.Number() * 8421504;
    const std::string format = input.Line();
    const std::string name = input.Rest();

    const CounterTemplate counter = BuildCounterTemplate(name);
    test::Require(counter.text.size() <= name.size() + 2);
    // A number takes up to eleven characters in the place of two.
    test::Require(FormatCounter(name, number).size() <= name.size() * 6);
    FormatCounter(counter.text, number);
    const std::string filled = FormatTexts(format, name, "x");
    test::Require(filled.size() <= format.size() + name.size() + 1);
    std::string copy = name;
    for (int attempt = 1; attempt < 5; ++attempt) copy = MakeDashCopyName(copy, attempt, format);
    copy = name;
    for (int attempt = 1; attempt < 5; ++attempt) copy = MakePrefixCopyName(copy, attempt, format);
    return 0;
}
