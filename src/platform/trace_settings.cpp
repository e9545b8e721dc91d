#include "platform/trace_settings.h"

#include "platform/environment.h"
#include "platform/managed_key.h"
#include "platform/paths.h"
#include "platform/text.h"
#include "platform/trace.h"
#include "platform/win32.h"

namespace depot {
namespace {

constexpr std::uint64_t kMegabyte = 1024 * 1024;

std::string VariableTarget() {
    char target[MAX_PATH + 1] = {};
    const DWORD length = GetEnvironmentVariableA(kTraceVariable, target, sizeof(target));
    return length < sizeof(target) ? std::string(target, length) : std::string();
}

std::string TargetIn(const std::string& text) {
    std::string target = ExpandEnvironment(text);
    const bool isTarget = IsAbsolutePath(target) || EqualsNoCase(target, kTraceDebugger);
    return isTarget ? target : std::string();
}

void ReadLimits(const ManagedKey& key, TraceSettings& settings) {
    const auto size = key.Number(kTraceSize, {1, TraceSettings::kMostSize});
    const auto files = key.Number(kTraceFiles, {1, TraceSettings::kMostFiles});
    const bool isLimited = size || !settings.isFromEnvironment;
    if (isLimited) settings.mostBytes = kMegabyte * (size ? size->value : settings.kDefaultSize);
    if (files) settings.olderFiles = files->value;
}

}  // namespace

TraceSettings ReadTraceSettings() {
    TraceSettings settings;
    settings.target = VariableTarget();
    settings.isFromEnvironment = !settings.target.empty();
    const ManagedKey key(kTraceKey);
    if (key.IsEmpty()) return settings;
    const auto target = key.Text(kTraceTarget);
    if (target && (target->IsPolicy() || !settings.isFromEnvironment)) {
        settings.target = TargetIn(target->value);
        settings.isFromEnvironment = false;
    }
    ReadLimits(key, settings);
    return settings;
}

bool IsTraceAllowedForAll() {
    for (const std::string& path : {PolicyKeyOf(kTraceKey), std::string(kTraceKey)}) {
        const auto key = RegistryKey::Open(HKEY_LOCAL_MACHINE, path, KEY_QUERY_VALUE);
        const auto allowed = key ? key->ReadDword(kTraceElevated) : std::nullopt;
        if (allowed) return *allowed == 1U;
    }
    return false;
}

}  // namespace depot
