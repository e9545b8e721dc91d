#include "directory/directory_help.h"

#include "platform/text.h"
#include "platform/user_presence.h"

namespace depot {
namespace {

DirectoryHelp installed = nullptr;

}  // namespace

void InstallDirectoryHelp(DirectoryHelp help) {
    installed = help;
}

std::string WithHelpWhereUnseen(const std::string& message, std::uint32_t code) {
    if (installed == nullptr || HasAPerson()) return message;
    const std::optional<std::string> help = installed(code);
    return help ? Concatenate({message, "\n", *help}) : message;
}

}  // namespace depot
