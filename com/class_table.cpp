#include "com/class_table.h"

#include <mutex>
#include <new>

#include "com/module.h"

namespace kel::com {
namespace {

// Factories are asked for from any apartment.
std::mutex factoriesMutex;

// The class factory of a row. It does not count for the module's lock: the table holds it for good.
class ClassFactory final : public IClassFactory {
public:
    explicit ClassFactory(const ClassRow& row) : row_(row) {}

    STDMETHODIMP QueryInterface(REFIID iid, void** result) override {
        if (!result) return E_POINTER;
        *result = nullptr;
        if (iid != IID_IUnknown && iid != IID_IClassFactory) return E_NOINTERFACE;
        *result = static_cast<IClassFactory*>(this);
        AddRef();
        return S_OK;
    }

    STDMETHODIMP_(ULONG) AddRef() override { return InterlockedIncrement(&references_); }

    STDMETHODIMP_(ULONG) Release() override {
        const LONG references = InterlockedDecrement(&references_);
        if (references == 0) delete this;
        return references;
    }

    STDMETHODIMP CreateInstance(IUnknown* outer, REFIID iid, void** result) override {
        if (!result) return E_POINTER;
        *result = nullptr;
        if (outer && iid != IID_IUnknown) return CLASS_E_NOAGGREGATION;
        const std::lock_guard lock(mutex_);
        return row_.createInstance(row_, outer, iid, result);
    }

    STDMETHODIMP LockServer(BOOL lock) override {
        if (lock) {
            lockModule();
        } else {
            unlockModule();
        }
        return S_OK;
    }

private:
    ~ClassFactory() = default;

    const ClassRow& row_;
    std::recursive_mutex mutex_;
    LONG references_ = 1;
};

}  // namespace

HRESULT classObject(std::span<ClassRow> table, REFCLSID identifier, REFIID iid,
                    void** result) noexcept {
    if (!result) return E_POINTER;
    *result = nullptr;
    const std::lock_guard lock(factoriesMutex);
    for (ClassRow& row : table) {
        if (*row.identifier != identifier) continue;
        if (!row.factory) row.factory = new (std::nothrow) ClassFactory(row);
        return row.factory ? row.factory->QueryInterface(iid, result) : E_OUTOFMEMORY;
    }
    return CLASS_E_CLASSNOTAVAILABLE;
}

void releaseFactories(std::span<ClassRow> table) noexcept {
    for (ClassRow& row : table) {
        if (!row.factory) continue;
        row.factory->Release();
        row.factory = nullptr;
    }
}

}  // namespace kel::com
