#include "depotctl/program.h"

#include <utility>

#include "depotctl/encoding.h"
#include "depotctl/utf8_text.h"
#include "manager/standard_folders.h"
#include "model/localization.h"
#include "platform/full_path.h"
#include "platform/replace_file.h"
#include "platform/system_code_page.h"
#include "platform/user_notice.h"
#include "texts/language_settings.h"

namespace depot::ctl {
namespace {

std::string lastNotice;

}  // namespace

Program::Program() {
    InstallSystemCodePage();
    InstallLocalization({CurrentLanguageCode, ResourceText});
    InstallNoticeReceiver([](const std::string& text) { lastNotice = text; });
    // Only copies take their names from the texts; English ones serve without them.
    StandardFolders folders;
    resources_ = LoadResourceLibrary(folders.ResourceFolder() + kResourceLibraryName);
    SetResourceLibrary(resources_.get());
}

Program::~Program() {
    session_.reset();
    SetResourceLibrary(nullptr);
    InstallNoticeReceiver(nullptr);
}

DepotSession& Program::Session() {
    if (!session_) session_ = std::make_unique<DepotSession>();
    return *session_;
}

std::string Program::TakeNotice() {
    return OneLine(Utf8FromAnsi(std::exchange(lastNotice, {})));
}

void Program::Complain(std::string_view text) const {
    errors.Write("depotctl: ", Emphasis::kError);
    errors.Write(OneLine(text) + "\n");
}

void Program::ReportError(ExitCode code, std::string_view text) const {
    Remark({{"error", {{"code", static_cast<int>(code)}, {"text", OneLine(text)}}}}, text);
}

void Program::StoreOutput(const std::string& utf8Path) const {
    const std::string path = FullPath(ToAnsi(utf8Path));
    constexpr std::size_t kMost = 0xFFFFFFFF;
    if (collected_.size() > kMost) SetLastError(ERROR_FILE_TOO_LARGE);
    if (collected_.size() <= kMost &&
        ReplaceLocalFile(path, collected_.data(), static_cast<std::uint32_t>(collected_.size()),
                         Flush::kNow)) {
        return;
    }
    const DWORD error = GetLastError();
    Refuse("cannot write the output to \"" + utf8Path + "\": " + SystemWords(error));
}

void Program::Remark(const Json& json, std::string_view text) const {
    if (!renderer.IsJson()) return Complain(text);
    errors.Write(json.dump(-1, ' ', false, Json::error_handler_t::replace) + "\n");
}

void Program::ReportLeftOut(std::uint32_t count) const {
    const Json codePage = GetACP();
    // The answer stays a list of what can be named; how much it lacks stands beside it.
    Remark({{"leftOut", count}, {"codePage", codePage}},
           std::to_string(count) + (count == 1 ? " name has" : " names have") +
               " characters that code page " + codePage.dump() +
               " does not have and cannot be listed");
}

}  // namespace depot::ctl
