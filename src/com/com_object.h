// Giving a class its reference count, plainly or as part of an aggregate.
//
// A class that is made into an object this way derives from its interfaces, leaves IUnknown to
// these templates and answers InternalQueryInterface with its own interfaces. Each object takes a
// lock on the module for as long as it lives.
#pragma once

#include <atomic>
#include <memory>
#include <new>

#include "com/com_module.h"
#include "platform/win32.h"

namespace depot {

// A lock on the module that keeps the DLL loaded.
class ModuleLock {
public:
    ModuleLock() { Module().Lock(); }
    ~ModuleLock() { Module().Unlock(); }
    ModuleLock(const ModuleLock&) = delete;
    ModuleLock& operator=(const ModuleLock&) = delete;
};

// A reference count. The object starts without references: its maker takes the first.
class ReferenceCount {
public:
    ULONG Add() { return ++count_; }
    ULONG Drop() { return --count_; }

private:
    std::atomic<ULONG> count_{0};
};

// An object of its own.
template <class Base>
class CComObject final : public Base {
public:
    STDMETHODIMP QueryInterface(REFIID interfaceId, void** object) noexcept override {
        return this->InternalQueryInterface(interfaceId, object);
    }
    STDMETHODIMP_(ULONG) AddRef() noexcept override { return references_.Add(); }
    STDMETHODIMP_(ULONG) Release() noexcept override {
        const ULONG left = references_.Drop();
        if (left == 0) std::default_delete<CComObject>()(this);
        return left;
    }

private:
    ModuleLock lock_;
    ReferenceCount references_;
};

// The part of an aggregate that carries the interfaces: its IUnknown is the outer object's.
template <class Base>
class CComContainedObject final : public Base {
public:
    explicit CComContainedObject(IUnknown* outer) : outer_(outer) {}

    STDMETHODIMP QueryInterface(REFIID interfaceId, void** object) noexcept override {
        return outer_->QueryInterface(interfaceId, object);
    }
    STDMETHODIMP_(ULONG) AddRef() noexcept override { return outer_->AddRef(); }
    STDMETHODIMP_(ULONG) Release() noexcept override { return outer_->Release(); }

private:
    IUnknown* const outer_;  // not counted: the outer object owns the aggregate
};

// The private IUnknown that an outer object holds of its aggregate.
template <class Base>
class CComAggObject final : public IUnknown {
public:
    explicit CComAggObject(IUnknown* outer) : contained_(outer) {}

    STDMETHODIMP QueryInterface(REFIID interfaceId, void** object) noexcept override {
        if (object == nullptr) return E_POINTER;
        if (!IsEqualIID(interfaceId, IID_IUnknown)) {
            return contained_.InternalQueryInterface(interfaceId, object);
        }
        *object = static_cast<IUnknown*>(this);
        AddRef();
        return S_OK;
    }
    STDMETHODIMP_(ULONG) AddRef() noexcept override { return references_.Add(); }
    STDMETHODIMP_(ULONG) Release() noexcept override {
        const ULONG left = references_.Drop();
        if (left == 0) std::default_delete<CComAggObject>()(this);
        return left;
    }

private:
    ModuleLock lock_;
    ReferenceCount references_;
    CComContainedObject<Base> contained_;
};

// Makes an object and returns its interface `interfaceId`; the object is gone again when it does
// not have that interface.
template <class Object, class... Arguments>
HRESULT CreateComObject(REFIID interfaceId, void** object, Arguments... arguments) noexcept {
    std::unique_ptr<Object> created(new (std::nothrow) Object(arguments...));
    if (!created) return E_OUTOFMEMORY;
    Object* const counted = created.release();  // from here on its reference count decides
    counted->AddRef();
    const HRESULT result = counted->QueryInterface(interfaceId, object);
    counted->Release();
    return result;
}

// The row of a class that is made by these templates.
template <class Class>
constexpr ObjectMapEntry MappedAs(const CLSID& classId, WORD registryScript,
                                  void (*terminate)() = nullptr) {
    return {classId, registryScript,
            [](REFIID interfaceId, void** object) {
                return CreateComObject<CComObject<Class>>(interfaceId, object);
            },
            [](IUnknown* outer, void** object) {
                return CreateComObject<CComAggObject<Class>>(IID_IUnknown, object, outer);
            },
            terminate};
}

}  // namespace depot
