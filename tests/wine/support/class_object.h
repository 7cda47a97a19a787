#pragma once
// A class of the link's library as long as a test wants it so.

#include <windows.h>

#include <unknwn.h>

#include <functional>
#include <utility>

#include "com/object.h"

namespace kel::test {

class ClassObject {
public:
    using Maker = std::function<com::ComPtr<IUnknown>()>;

    // Whoever creates an object of the class gets what is made; for null, creation fails.
    ClassObject(REFCLSID identifier, Maker make) {
        com::check(CoRegisterClassObject(identifier,
                                         com::makeObject<Factory>(std::move(make))->controlling(),
                                         CLSCTX_INPROC_SERVER, REGCLS_MULTIPLEUSE, &cookie_));
    }
    // The same one for all.
    ClassObject(REFCLSID identifier, IUnknown* object)
        : ClassObject(identifier, [object = com::ComPtr<IUnknown>(object)] { return object; }) {}
    ~ClassObject() { CoRevokeClassObject(cookie_); }
    ClassObject(const ClassObject&) = delete;
    ClassObject& operator=(const ClassObject&) = delete;

private:
    class Factory final : public com::Object<Factory, com::Plain<IClassFactory>> {
    public:
        static constexpr com::ClassDescription kClass{};
        explicit Factory(Maker make) : make_(std::move(make)) {}
        STDMETHODIMP CreateInstance(IUnknown*, REFIID iid, void** result) override {
            const com::ComPtr<IUnknown> object = make_();
            return object ? object->QueryInterface(iid, result) : E_FAIL;
        }
        STDMETHODIMP LockServer(BOOL) override { return S_OK; }

    private:
        Maker make_;
    };

    DWORD cookie_ = 0;
};

}  // namespace kel::test
