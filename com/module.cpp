#include "com/module.h"

#include <map>
#include <memory>
#include <mutex>

#include "com/error.h"

namespace kel::com {
namespace {

struct GuidOrder {
    bool operator()(const GUID& left, const GUID& right) const {
        return memcmp(&left, &right, sizeof(GUID)) < 0;
    }
};

// What is loaded of the type library. Factories and objects of several apartments share it.
struct TypeCache {
    std::mutex mutex;
    ComPtr<ITypeLib> library;
    std::map<GUID, ComPtr<ITypeInfo>, GuidOrder> types;
};

HINSTANCE instance = nullptr;
LONG locks = 0;

// Allocated so that nothing is released when the whole process ends: other modules may be gone.
TypeCache* typeCache = nullptr;

ComPtr<ITypeLib> libraryOf(TypeCache& cache) {
    if (!cache.library) {
        check(LoadTypeLibEx(modulePath().c_str(), REGKIND_NONE, &cache.library));
    }
    return cache.library;
}

}  // namespace

void attachModule(HINSTANCE moduleHandle) {
    instance = moduleHandle;
    typeCache = new TypeCache;
}

void detachModule() {
    delete typeCache;
    typeCache = nullptr;
}

HINSTANCE moduleInstance() {
    return instance;
}

std::wstring modulePath() {
    std::wstring path(MAX_PATH, L'\0');
    for (;;) {
        const DWORD length =
            GetModuleFileNameW(instance, path.data(), static_cast<DWORD>(path.size()));
        if (length == 0) throw lastError();
        if (length < path.size()) {
            path.resize(length);
            return path;
        }
        path.resize(path.size() * 2);
    }
}

void lockModule() {
    InterlockedIncrement(&locks);
}

void unlockModule() {
    InterlockedDecrement(&locks);
}

LONG moduleLocks() {
    return InterlockedCompareExchange(&locks, 0, 0);
}

ComPtr<ITypeLib> typeLibrary() {
    const std::lock_guard lock(typeCache->mutex);
    return libraryOf(*typeCache);
}

ComPtr<ITypeInfo> typeInfo(const GUID& identifier) {
    const std::lock_guard lock(typeCache->mutex);
    ComPtr<ITypeInfo>& type = typeCache->types[identifier];
    if (!type) check(libraryOf(*typeCache)->GetTypeInfoOfGuid(identifier, &type));
    return type;
}

}  // namespace kel::com
