#include "macros/replacer_cache.h"

#include "platform/own_objects.h"

namespace depot {
namespace {

constexpr char kBlockPrefix[] = "Quillon - Depot - Replacers - ";
constexpr char kOrganization[] = "Quillon";

bool IsEmpty(const MacroSlot& slot) {
    return *slot == '\0';
}

}  // namespace

ReplacerLock::ReplacerLock() {
    OwnObjectRights rights;
    event_.reset(CreateEventA(rights.Get(), FALSE, FALSE, kReplacerEventName));
    const bool existed = GetLastError() == ERROR_ALREADY_EXISTS;
    if (!event_ || !existed) return;
    if (IsTrustedObject(event_.get(), kReplacerEventName)) {
        WaitForSingleObject(event_.get(), kReplacerWaitMilliseconds);
    } else {
        event_.reset();
    }
}

ReplacerLock::~ReplacerLock() {
    if (event_) SetEvent(event_.get());
}

std::string ReplacerBlockName() {
    return ProcessBlockName(kBlockPrefix);
}

std::unique_ptr<MacroCacheHolder> OpenReplacerCache(const std::string& userDir,
                                                    const std::string& languageCode) {
    auto cache = std::make_unique<MacroCacheHolder>(1, ReplacerBlockName());
    cache->Change([&](MacroValues& values) {
        if (IsEmpty(values.userFolder)) {
            FillSlot(values.organization, kOrganization);
            FillSlot(values.userFolder, userDir);
        }
        if (IsEmpty(values.languageCode)) FillSlot(values.languageCode, languageCode);
    });
    return cache;
}

}  // namespace depot
