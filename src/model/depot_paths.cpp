#include "model/depot_paths.h"

#include <algorithm>
#include <atomic>
#include <chrono>
#include <new>

#include "directory/ldap_items.h"
#include "macros/replacers.h"
#include "model/depot.h"
#include "model/depots.h"
#include "platform/first_answer.h"
#include "platform/local_file.h"
#include "platform/paths.h"
#include "platform/text.h"
#include "platform/token.h"

namespace depot {
namespace {

// Whether the code is an answer for want of credentials or rights. Some servers refuse a request of
// an unknown user as an operation that is out of order.
bool AsksForMore(std::uint32_t code) {
    switch (code) {
        case LDAP_OPERATIONS_ERROR:
        case LDAP_AUTH_METHOD_NOT_SUPPORTED:
        case LDAP_STRONG_AUTH_REQUIRED:
        case LDAP_CONFIDENTIALITY_REQUIRED:
        case LDAP_INAPPROPRIATE_AUTH:
        case LDAP_INVALID_CREDENTIALS:
        case LDAP_INSUFFICIENT_RIGHTS:
        case LDAP_UNWILLING_TO_PERFORM:
            return true;
        default:
            return false;
    }
}

// Returns the list of depots that the location belongs to, or null.
CDepots* OwningList(const CDepotPath& location) {
    const CDepotPaths* const paths = location.owner;
    return paths != nullptr && paths->owner != nullptr ? paths->owner->owner : nullptr;
}

// How long a location that does not answer holds up the next one.
constexpr std::chrono::seconds kPatience(2);

}  // namespace

// The look whether one location can be reached, which may run on a thread of its own. Nothing is
// asked or shown: the first use of the location does that. This is the one at a folder.
class LocationProbe : NotCopied {
public:
    explicit LocationProbe(CDepotPath& location) : path_(ExpandedPath(location)) {}
    virtual ~LocationProbe() = default;

    // Whether the look contacts a directory's server.
    virtual bool AsksServer() const { return false; }
    // Whether the answer may be long in coming.
    bool MayWait() const { return AsksServer() || path_.starts_with("\\\\"); }
    // Whether the location needs no look where it is a depot's only one.
    virtual bool IsChosenUnasked() { return false; }

    virtual Answer Run() { return PathExists(path_) ? Answer::kGood : Answer::kNone; }

    // What Run has found.
    virtual bool HasInvalidBase() const { return false; }
    // Returns the directory with its connection, for the location itself; null where the first use
    // would bind in another way, or for a folder.
    virtual std::unique_ptr<CLDAPItems> Directory(CDepotPath& /*location*/) { return nullptr; }

protected:
    const std::string path_;
};

namespace {

class DirectoryProbe final : public LocationProbe {
public:
    explicit DirectoryProbe(CDepotPath& location)
        : LocationProbe(location), record_(location.Clone()) {
        if (!record_) throw std::bad_alloc();
        record_->owner = nullptr;
    }

    bool AsksServer() const override { return true; }

    // A log-on that is still to be completed is tried quietly before a user is asked for it, and a
    // base that no server takes for a name is reported.
    bool IsChosenUnasked() override {
        CLDAPItems directory(record_.get());
        return directory.Connection().OpensUnasked() &&
               directory.Schema().Explode(directory.PathToDN(path_)).code == LDAP_SUCCESS;
    }

    // Looks for the base alone.
    Answer Run() override {
        directory_ = std::make_unique<CLDAPItems>(record_.get());
        LdapConnection& connection = directory_->Connection();
        const Result connected = connection.ConnectQuietly();
        if (!connected) return AsksForMore(CodeOf(connected)) ? Answer::kFallback : Answer::kNone;
        const Result found = directory_->Entries().Find(directory_->PathToDN(path_));
        if (found) return Answer::kGood;
        directory_->Close();
        const std::uint32_t code = CodeOf(found);
        hasInvalidBase_ = code == LDAP_INVALID_DN_SYNTAX;
        // To a user who is not known yet a server may show no entry at all.
        const bool isHidden = code == LDAP_NO_SUCH_OBJECT && !connection.OpensUnasked();
        return isHidden || AsksForMore(code) ? Answer::kFallback : Answer::kNone;
    }

    bool HasInvalidBase() const override { return hasInvalidBase_; }

    std::unique_ptr<CLDAPItems> Directory(CDepotPath& location) override {
        if (!directory_ || !directory_->IsConnected()) return nullptr;
        if (!directory_->Connection().OpensUnasked()) return nullptr;
        auto own = std::make_unique<CLDAPItems>(&location);
        own->Connection().Adopt(directory_->Connection());
        return own;
    }

private:
    const std::unique_ptr<CDepotPath> record_;
    std::unique_ptr<CLDAPItems> directory_;
    std::atomic<bool> hasInvalidBase_ = false;
};

std::unique_ptr<LocationProbe> MakeProbe(CDepotPath& location) {
    return MakeByType<LocationProbe, LocationProbe, DirectoryProbe>(location, location);
}

}  // namespace

CDepotPaths::CDepotPaths(CDepot* owningDepot) : owner(owningDepot) {}

CDepotPaths::~CDepotPaths() {
    directory_.reset();
    RemoveAllElements(array_, ownsItems);
}

std::unique_ptr<CLDAPItems> CDepotPaths::TakeDirectory() {
    return std::move(directory_);
}

std::vector<std::string> CDepotPaths::ServersBeside(const CDepotPath& location) const {
    std::vector<std::string> keys;
    const std::string own = ServerKeyOf(location);
    for (CDepotPath* const other : array_) {
        const bool isAlike = other->IsDirectory() && AreSecuredAlike(*other, location) &&
                             other->authentication == kSimpleAuthentication;
        if (isAlike && ServerKeyOf(*other) != own) keys.push_back(ServerKeyOf(*other));
    }
    return keys;
}

bool CDepotPaths::LeaveConnection() {
    return directory_ && directory_->Connection().Leave();
}

void CDepotPaths::Forget() {
    activeLocation_ = nullptr;
    activePath_.clear();
    directory_.reset();
}

void CDepotPaths::Add(CDepotPath* location, bool clone) {
    AddElement(array_, location, clone);
}

void CDepotPaths::Copy(const CDepotPaths* other) {
    if (other == nullptr) return;
    const std::size_t before = Count();
    CopyElements(array_, other->array_);
    // A clone starts with its source's owner, which may be deleted before the clone is.
    for (std::size_t index = before; index < Count(); ++index) At(index)->owner = this;
}

void CDepotPaths::RemoveAll(bool deleteElements) {
    Forget();
    RemoveAllElements(array_, deleteElements);
}

void CDepotPaths::Remove(CDepotPath* location) {
    if (location == activeLocation_) Forget();
    RemoveElement(array_, location);
}

void CDepotPaths::RemoveAllBut(const CDepotPath* location) {
    for (std::size_t index = Count(); index > 0; --index) {
        CDepotPath* const other = At(index - 1);
        if (other != location) Remove(other);
    }
}

std::string CDepotPaths::GetActivePath() {
    if (activePath_.empty()) {
        ChooseLocation();
        if (activeLocation_ != nullptr) {
            activePath_ = EnsureTrailingBackslash(ExpandedPath(*activeLocation_));
        }
    }
    return activePath_;
}

CDepotPath* CDepotPaths::ActiveLocation() {
    ChooseLocation();
    return activeLocation_;
}

void CDepotPaths::ChooseLocation() {
    if (activeLocation_ != nullptr || Count() == 0) return;
    if (Count() == 1 && MakeProbe(*At(0))->IsChosenUnasked()) {
        activeLocation_ = At(0);
        return;
    }
    activeLocation_ = At(FindReachable().value_or(0));
}

// Locations whose answer is at hand are looked at one after another; from the first on that may
// let wait for it, they do not wait for each other.
std::optional<std::size_t> CDepotPaths::FindReachable() {
    std::optional<std::size_t> fallback;
    for (std::size_t index = 0; index < Count(); ++index) {
        const auto probe = MakeProbe(*At(index));
        // A thread of its own would not act for the user for whom this one does.
        if (probe->MayWait() && Count() > 1 && !IsImpersonating()) return FindReachableFrom(index);
        const Answer answer = probe->Run();
        TakeOver(*probe, *At(index), answer == Answer::kGood);
        if (answer == Answer::kGood) return index;
        if (answer == Answer::kFallback && !fallback) fallback = index;
    }
    return fallback;
}

std::optional<std::size_t> CDepotPaths::FindReachableFrom(std::size_t first) {
    std::vector<std::shared_ptr<LocationProbe>> probes;
    std::vector<std::function<Answer()>> attempts;
    for (std::size_t index = first; index < Count(); ++index) {
        probes.push_back(MakeProbe(*At(index)));
        attempts.push_back([probe = probes.back()] { return probe->Run(); });
    }
    const std::optional<std::size_t> found = FirstAnswer(std::move(attempts), kPatience);
    // Those behind the chosen one may still be under way.
    for (std::size_t at = 0; at < probes.size() && at <= found.value_or(at); ++at) {
        TakeOver(*probes[at], *At(first + at), at == found);
    }
    return found ? std::optional(first + *found) : std::nullopt;
}

void CDepotPaths::TakeOver(LocationProbe& probe, CDepotPath& location, bool isChosen) {
    if (probe.HasInvalidBase()) CLDAPItems(&location).ReportError(LDAP_INVALID_DN_SYNTAX);
    if (isChosen) directory_ = probe.Directory(location);
    if (directory_) directory_->Connection().Release();
}

bool CDepotPaths::ChoiceProbesDirectory() const {
    if (activeLocation_ != nullptr) return false;
    for (CDepotPath* const location : array_) {
        const auto probe = MakeProbe(*location);
        if (probe->AsksServer()) return true;
        if (probe->Run() == Answer::kGood) return false;
    }
    return false;
}

bool CDepotPaths::MayHold(const std::string& path) const {
    if (!ChoiceProbesDirectory()) return true;
    return std::any_of(array_.begin(), array_.end(), [&](CDepotPath* location) {
        const std::string base = RemoveTrailingBackslash(ExpandedPath(*location));
        return !base.empty() && FindNoCase(path, base) != std::string::npos;
    });
}

std::string ExpandedPath(CDepotPath& location) {
    if (!location.locationText.empty() || location.path.empty()) return location.locationText;
    std::string text = location.path;
    if (CDepots* const depots = OwningList(location)) {
        const MacroValues values = depots->CopyReplacers();
        ExpandReplacers(&values, text);
    }
    location.locationText = text;
    return text;
}

}  // namespace depot
