#include "api/depot_infos.h"

#include <algorithm>
#include <vector>

#include "api/place_method.h"
#include "com/com_object.h"
#include "com/typelib_dispatch.h"
#include "platform/paths.h"
#include "platform/text.h"
#include "store/folder_store.h"

namespace depot {
namespace {

// What is said of one depot.
struct DepotFacts {
    std::string key;
    std::string name;
    std::string location;
    std::string root;  // by which the interface names it
};

// Nothing is asked of a server: where a depot was not used yet its first location is shown.
std::string LocationText(const CDepot& depot) {
    CDepotPath* const chosen = depot.paths->ChosenLocation();
    CDepotPath* const location = chosen ? chosen : depot.paths->At(0);
    if (location == nullptr) return {};
    const std::string path = ExpandedPath(*location);
    if (!location->IsDirectory()) return RemoveTrailingBackslash(path);
    constexpr std::uint32_t kTlsFromTheStart = 2;
    return Concatenate({location->security == kTlsFromTheStart ? "ldaps://" : "ldap://",
                        location->host, ":", NumberText(location->port), "/", path});
}

// The depot without a key is used by the folder that it is.
std::string RootOf(const CDepot& depot, const std::string& location) {
    return depot.name.empty() ? location : Concatenate({"<", depot.name, ">\\"});
}

DepotFacts FactsOf(const CDepot& depot) {
    DepotFacts facts = {depot.name, depot.displayName, LocationText(depot), {}};
    facts.root = RootOf(depot, facts.location);
    return facts;
}

// Whether a reference leads nowhere; the system would follow it.
bool IsDangling(const VARIANT& value) {
    if ((V_VT(&value) & VT_BYREF) == 0) return false;
    if (V_BYREF(&value) == nullptr) return true;
    return V_VT(&value) == (VT_VARIANT | VT_BYREF) && IsDangling(*V_VARIANTREF(&value));
}

HRESULT GiveText(const std::string& text, BSTR* output) noexcept try {
    if (output == nullptr) return E_POINTER;
    *output = NewNameBstr(text).release();
    return *output != nullptr ? S_OK : E_OUTOFMEMORY;
} catch (...) {
    return E_OUTOFMEMORY;
}

// Succeeds when the depot's root can be seen without a question to the user.
Result Reach(CDepots& depots, const std::string& root) {
    const NoticeCollector silence;
    AnyPlace place;
    ItemKind kind = ItemKind::kMissing;
    Result seen = FindPlace(depots, root, place);
    if (seen) seen = LookAt(place, kind);
    if (seen && kind == ItemKind::kMissing) return SystemError(ERROR_PATH_NOT_FOUND, root);
    return seen;
}

class DepotInfo : public TypeLibraryDispatch<IDepotInfo, &IID_IDepotInfo> {
public:
    void Init(DepotFacts facts, LONG_PTR handle) {
        facts_ = std::move(facts);
        handle_ = handle;
    }
    const std::string& KeyText() const { return facts_.key; }

    STDMETHODIMP get_Key(BSTR* pbstrKey) noexcept override {
        return GiveText(facts_.key, pbstrKey);
    }
    STDMETHODIMP get_Name(BSTR* pbstrName) noexcept override {
        return GiveText(facts_.name, pbstrName);
    }
    STDMETHODIMP get_Location(BSTR* pbstrLocation) noexcept override {
        return GiveText(facts_.location, pbstrLocation);
    }
    STDMETHODIMP get_Reachable(VARIANT_BOOL* pbReachable) noexcept override {
        return RunForDone(handle_, pbReachable, [this](DepotSession& session) {
            return Reach(session.Depots(), facts_.root);
        });
    }

private:
    DepotFacts facts_;
    LONG_PTR handle_ = 0;
};

using Info = CComObject<DepotInfo>;

template <class Object>
UniqueCom<Object> NewObject() {
    auto made = std::make_unique<Object>();
    Object* const counted = made.release();  // from here on its reference count decides
    counted->AddRef();
    return UniqueCom<Object>(counted);
}

// The depots that a list and its enumerators share.
class SharedInfos {
public:
    void Append(Info& info) {
        infos_.emplace_back(&info);
        info.AddRef();
    }
    std::size_t Count() const { return infos_.size(); }
    Info& At(std::size_t index) const { return *infos_[index]; }

private:
    std::vector<UniqueCom<Info>> infos_;
};

// Goes through the depots; copies of it have their own places.
class InfoEnumerator : public IEnumVARIANT {
public:
    void Init(const SharedInfos& infos, std::size_t next) {
        for (std::size_t index = 0; index < infos.Count(); ++index) infos_.Append(infos.At(index));
        next_ = next;
    }

    HRESULT InternalQueryInterface(REFIID interfaceId, void** object) {
        return GiveInterface(*this, {&IID_IUnknown, &IID_IEnumVARIANT}, interfaceId, object);
    }

    STDMETHODIMP Next(ULONG count, VARIANT* values, ULONG* fetched) noexcept override {
        if (fetched != nullptr) *fetched = 0;
        if (values == nullptr || (fetched == nullptr && count != 1)) return E_POINTER;
        ULONG done = 0;
        for (; done < count && next_ < infos_.Count(); ++done, ++next_) {
            Info& info = infos_.At(next_);
            info.AddRef();
            VariantInit(&values[done]);
            V_VT(&values[done]) = VT_DISPATCH;
            V_DISPATCH(&values[done]) = &info;
        }
        if (fetched != nullptr) *fetched = done;
        return done == count ? S_OK : S_FALSE;
    }
    STDMETHODIMP Skip(ULONG count) noexcept override {
        const std::size_t left = infos_.Count() - next_;
        next_ += std::min<std::size_t>(count, left);
        return count <= left ? S_OK : S_FALSE;
    }
    STDMETHODIMP Reset() noexcept override {
        next_ = 0;
        return S_OK;
    }
    STDMETHODIMP Clone(IEnumVARIANT** copy) noexcept override;

private:
    SharedInfos infos_;
    std::size_t next_ = 0;
};

HRESULT GiveEnumerator(const SharedInfos& infos, std::size_t next, IEnumVARIANT** output) noexcept
    try {
    if (output == nullptr) return E_POINTER;
    *output = nullptr;
    auto made = NewObject<CComObject<InfoEnumerator>>();
    made->Init(infos, next);
    *output = made.release();
    return S_OK;
} catch (...) {
    return E_OUTOFMEMORY;
}

STDMETHODIMP InfoEnumerator::Clone(IEnumVARIANT** copy) noexcept {
    return GiveEnumerator(infos_, next_, copy);
}

class DepotInfos : public TypeLibraryDispatch<IDepotInfos, &IID_IDepotInfos> {
public:
    void Init(const CDepots& depots, LONG_PTR handle) {
        for (const CDepot* depot : depots) {
            auto info = NewObject<Info>();
            info->Init(FactsOf(*depot), handle);
            infos_.Append(*info);
        }
    }

    STDMETHODIMP get_Item(VARIANT index, IDepotInfo** ppDepot) noexcept override try {
        if (ppDepot == nullptr) return E_POINTER;
        *ppDepot = nullptr;
        Info* const info = Find(index);
        if (info == nullptr) return DISP_E_BADINDEX;
        info->AddRef();
        *ppDepot = info;
        return S_OK;
    } catch (...) {
        return E_OUTOFMEMORY;
    }
    STDMETHODIMP get_Count(LONG* plCount) noexcept override {
        if (plCount == nullptr) return E_POINTER;
        *plCount = static_cast<LONG>(infos_.Count());
        return S_OK;
    }
    STDMETHODIMP get__NewEnum(IUnknown** ppEnumerator) noexcept override {
        if (ppEnumerator == nullptr) return E_POINTER;
        IEnumVARIANT* made = nullptr;
        const HRESULT result = GiveEnumerator(infos_, 0, &made);
        *ppEnumerator = made;
        return result;
    }

private:
    // A text is a key, in any letter case; all else is a number from 1 on. Null for no depot.
    Info* Find(const VARIANT& index) const {
        VARIANT given = {};
        if (IsDangling(index) || FAILED(VariantCopyInd(&given, const_cast<VARIANT*>(&index))))
            return nullptr;
        Info* const found = V_VT(&given) == VT_BSTR ? FindKey(V_BSTR(&given)) : FindNumber(given);
        VariantClear(&given);
        return found;
    }
    Info* FindKey(BSTR text) const {
        const std::optional<std::string> key = ExactName(&text);
        for (std::size_t at = 0; key && at < infos_.Count(); ++at) {
            if (EqualsNoCase(infos_.At(at).KeyText(), *key)) return &infos_.At(at);
        }
        return nullptr;
    }
    Info* FindNumber(VARIANT& given) const {
        if (FAILED(VariantChangeType(&given, &given, 0, VT_I4)) || V_I4(&given) < 1) return nullptr;
        const auto number = static_cast<std::size_t>(V_I4(&given));
        return number <= infos_.Count() ? &infos_.At(number - 1) : nullptr;
    }

    SharedInfos infos_;
};

}  // namespace

UniqueCom<IDepotInfos> NewDepotInfos(const CDepots& depots, LONG_PTR handle) {
    auto made = NewObject<CComObject<DepotInfos>>();
    made->Init(depots, handle);
    return UniqueCom<IDepotInfos>(made.release());
}

}  // namespace depot
