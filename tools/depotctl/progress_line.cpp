#include "progress_line.h"

#include <algorithm>
#include <array>
#include <cstdio>

namespace depot::ctl {
namespace {

constexpr std::size_t kWidestBar = 30;
constexpr std::size_t kNarrowestBar = 5;
// Brackets and the blank behind them.
constexpr std::size_t kBarFrame = 3;

std::string Bar(const ProgressState& state, std::size_t cells) {
    const std::uint64_t all = std::max<std::uint32_t>(state.filesInAll, 1);
    const std::uint64_t done = std::min<std::uint64_t>(state.filesDone, all);
    const auto filled = static_cast<std::size_t>(done * cells / all);
    return "[" + std::string(filled, '#') + std::string(cells - filled, ' ') + "] ";
}

std::string Rate(const ProgressState& state) {
    if (state.seconds <= 0) return {};
    const double rate = static_cast<double>(state.bytesDone) / state.seconds;
    return "  " + SizeText(static_cast<std::uint64_t>(rate)) + "/s";
}

std::string TimeLeft(const ProgressState& state) {
    if (state.seconds <= 0 || state.filesDone == 0 || state.filesDone >= state.filesInAll)
        return {};
    const double each = state.seconds / state.filesDone;
    const double left = each * (state.filesInAll - state.filesDone);
    return "  " + DurationText(static_cast<std::uint64_t>(left + 0.5)) + " left";
}

}  // namespace

std::string DurationText(std::uint64_t seconds) {
    constexpr std::uint64_t kMost = 99 * 3600 + 59 * 60 + 59;
    const std::uint64_t shown = std::min(seconds, kMost);
    const auto hours = static_cast<unsigned>(shown / 3600);
    const auto minutes = static_cast<unsigned>(shown / 60 % 60);
    const auto rest = static_cast<unsigned>(shown % 60);
    std::array<char, 32> text = {};
    if (hours > 0) {
        std::snprintf(text.data(), text.size(), "%u:%02u:%02u", hours, minutes, rest);
    } else {
        std::snprintf(text.data(), text.size(), "%u:%02u", minutes, rest);
    }
    return text.data();
}

std::string SizeText(std::uint64_t bytes) {
    constexpr std::array<const char*, 4> kUnits = {"KB", "MB", "GB", "TB"};
    if (bytes < 1024) return std::to_string(bytes) + " B";
    auto value = static_cast<double>(bytes) / 1024;
    std::size_t unit = 0;
    for (; value >= 1024 && unit + 1 < kUnits.size(); ++unit) value /= 1024;
    std::array<char, 32> text = {};
    std::snprintf(text.data(), text.size(), "%.1f %s", value, kUnits[unit]);
    return text.data();
}

std::string ProgressLine(const ProgressState& state, std::size_t width) {
    std::string line = std::to_string(state.filesDone) + "/" + std::to_string(state.filesInAll) +
                       (state.filesInAll == 1 ? " file" : " files");
    for (const std::string& part :
         {"  " + SizeText(state.bytesDone), Rate(state), TimeLeft(state)}) {
        if (line.size() + part.size() <= width) line += part;
    }
    if (line.size() + kBarFrame + kNarrowestBar <= width) {
        line.insert(0, Bar(state, std::min(kWidestBar, width - line.size() - kBarFrame)));
    }
    return line.substr(0, width);
}

}  // namespace depot::ctl
