// A console of the test's own, without a window that anyone sees, and programs that run in it.
#pragma once

#include <string>
#include <vector>

#include "depotctl/failure.h"
#include "platform/handles.h"

namespace depot::test {

// The console of this process while the object lives; there is one at a time.
class TestConsole {
public:
    explicit TestConsole(int columns);
    ~TestConsole();
    TestConsole(const TestConsole&) = delete;
    TestConsole& operator=(const TestConsole&) = delete;

    // Starts depotctl at this console; `output` may take the place of the screen.
    void Start(const std::vector<std::string>& arguments, HANDLE output = nullptr);

    // Waits for the end of what was started, and returns its exit code.
    ctl::ExitCode Finish() const;

    ctl::ExitCode Run(const std::vector<std::string>& arguments) {
        Start(arguments);
        return Finish();
    }

    // The lines on the screen in UTF-8, without blanks at their ends and empty ones at the end.
    std::vector<std::string> Lines() const;
    std::string Screen() const;

    // The colours of the first character of a line.
    WORD AttributesAt(SHORT line) const;

    // Waits until a text is on the screen; false when it does not appear.
    bool WaitFor(const std::string& text) const;

    void Type(const std::wstring& text) const;
    static void PressCtrlC();

private:
    UniqueHandle input_, screen_, process_;
    int columns_;
};

}  // namespace depot::test
