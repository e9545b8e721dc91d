#include "depotbrowser/drop_target.h"

#include <span>
#include <utility>

#include "com/com_object.h"
// After the Windows headers.
#include <ole2.h>

namespace depot {
namespace {

// OLE on this thread, where its apartment allows it.
class OleOnThread {
public:
    OleOnThread() : result_(OleInitialize(nullptr)) {}
    ~OleOnThread() {
        if (IsThere()) OleUninitialize();
    }
    OleOnThread(const OleOnThread&) = delete;
    OleOnThread& operator=(const OleOnThread&) = delete;

    bool IsThere() const { return SUCCEEDED(result_); }

private:
    HRESULT result_;
};

struct MediumReleaser {
    void operator()(STGMEDIUM* medium) const { ReleaseStgMedium(medium); }
};

struct MemoryUnlocker {
    void operator()(void* block) const { GlobalUnlock(block); }
};

FORMATETC FileList() {
    return {CF_HDROP, nullptr, DVASPECT_CONTENT, -1, TYMED_HGLOBAL};
}

// The paths that a data object has; none when it has none.
DroppedPaths PathsOf(IDataObject& data) {
    FORMATETC format = FileList();
    STGMEDIUM medium = {};
    if (data.GetData(&format, &medium) != S_OK) return {};
    const std::unique_ptr<STGMEDIUM, MediumReleaser> owned(&medium);
    if (medium.tymed != TYMED_HGLOBAL || medium.hGlobal == nullptr) return {};
    const auto* const bytes = static_cast<const std::byte*>(GlobalLock(medium.hGlobal));
    if (bytes == nullptr) return {};
    const std::unique_ptr<void, MemoryUnlocker> locked(medium.hGlobal);
    return ParseDroppedPaths({bytes, GlobalSize(medium.hGlobal)});
}

// What OLE is given. Other programs' references may outlive the window, which is forgotten then.
class CDropTarget : public IDropTarget {
public:
    // From here on the window is asked; null forgets it.
    void Serve(const DropEvents* events) { events_ = events; }

    HRESULT InternalQueryInterface(REFIID interfaceId, void** object) {
        if (object == nullptr) return E_POINTER;
        *object = nullptr;
        if (!IsEqualIID(interfaceId, IID_IUnknown) && !IsEqualIID(interfaceId, IID_IDropTarget)) {
            return E_NOINTERFACE;
        }
        *object = static_cast<IDropTarget*>(this);
        AddRef();
        return S_OK;
    }

    STDMETHODIMP DragEnter(IDataObject* data, DWORD /*keys*/, POINTL place,
                           DWORD* effect) noexcept override {
        FORMATETC format = FileList();
        hasFiles_ = data != nullptr && data->QueryGetData(&format) == S_OK;
        return Answer(place, effect);
    }
    STDMETHODIMP DragOver(DWORD /*keys*/, POINTL place, DWORD* effect) noexcept override {
        return Answer(place, effect);
    }
    STDMETHODIMP DragLeave() noexcept override try {
        hasFiles_ = false;
        if (events_ != nullptr) events_->leave();
        return S_OK;
    } catch (...) {
        return E_UNEXPECTED;
    }
    STDMETHODIMP Drop(IDataObject* data, DWORD /*keys*/, POINTL place,
                      DWORD* effect) noexcept override try {
        const HRESULT answer = Answer(place, effect);
        if (events_ == nullptr || FAILED(answer)) return answer;
        events_->leave();
        hasFiles_ = false;
        if (*effect == DROPEFFECT_NONE || data == nullptr) return S_OK;
        const DroppedPaths paths = PathsOf(*data);
        if (paths.IsEmpty()) *effect = DROPEFFECT_NONE;
        if (!paths.IsEmpty()) events_->drop(paths, {place.x, place.y});
        return S_OK;
    } catch (...) {
        if (effect != nullptr) *effect = DROPEFFECT_NONE;
        return E_UNEXPECTED;
    }

protected:
    ~CDropTarget() = default;

private:
    HRESULT Answer(POINTL place, DWORD* effect) noexcept try {
        if (effect == nullptr) return E_POINTER;
        const bool mayCopy = hasFiles_ && (*effect & DROPEFFECT_COPY) != 0;
        *effect = DROPEFFECT_NONE;
        if (events_ == nullptr || !mayCopy) return S_OK;
        if (events_->hover({place.x, place.y})) *effect = DROPEFFECT_COPY;
        return S_OK;
    } catch (...) {
        return E_UNEXPECTED;
    }

    const DropEvents* events_ = nullptr;  // the window's, while it is there
    bool hasFiles_ = false;
};

struct ReferenceReleaser {
    void operator()(CComObject<CDropTarget>* target) const { target->Release(); }
};

}  // namespace

struct DropRegistration::Registered {
    Registered(HWND window, const DropEvents* events) : window_(window) {
        if (!ole_.IsThere()) return;
        auto made = std::make_unique<CComObject<CDropTarget>>();
        made->AddRef();
        made->Serve(events);
        target_.reset(made.release());
        isRegistered_ = SUCCEEDED(RegisterDragDrop(window_, target_.get()));
    }
    ~Registered() {
        if (isRegistered_) RevokeDragDrop(window_);
        if (target_) target_->Serve(nullptr);
    }
    Registered(const Registered&) = delete;
    Registered& operator=(const Registered&) = delete;

private:
    const OleOnThread ole_;  // ends last
    const HWND window_;
    std::unique_ptr<CComObject<CDropTarget>, ReferenceReleaser> target_;
    bool isRegistered_ = false;
};

DropRegistration::DropRegistration(HWND window, DropEvents events)
    : window_(window), events_(std::move(events)) {
    // Timers come after what is to be drawn.
    SetTimer(window_, kBeginTimer, 1, nullptr);
}

void DropRegistration::Begin() {
    KillTimer(window_, kBeginTimer);
    if (!registered_) registered_ = std::make_unique<Registered>(window_, &events_);
}

DropRegistration::~DropRegistration() = default;

void DropRegistration::End() {
    registered_.reset();
}

}  // namespace depot
