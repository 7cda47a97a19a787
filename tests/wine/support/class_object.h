#pragma once
// A class of the link's library as long as a test wants it so.

#include <windows.h>

#include <unknwn.h>

#include "com/object.h"

namespace kel::test {

// Whoever creates an object of the class gets this one; for null, creation fails.
class ClassObject {
public:
    ClassObject(REFCLSID identifier, IUnknown* object) {
        com::check(CoRegisterClassObject(identifier,
                                         com::makeObject<Factory>(object)->controlling(),
                                         CLSCTX_INPROC_SERVER, REGCLS_MULTIPLEUSE, &cookie_));
    }
    ~ClassObject() { CoRevokeClassObject(cookie_); }
    ClassObject(const ClassObject&) = delete;
    ClassObject& operator=(const ClassObject&) = delete;

private:
    class Factory final : public com::Object<Factory, com::Plain<IClassFactory>> {
    public:
        static constexpr com::ClassDescription kClass{};
        explicit Factory(IUnknown* object) : object_(object) {}
        STDMETHODIMP CreateInstance(IUnknown*, REFIID iid, void** result) override {
            return object_ ? object_->QueryInterface(iid, result) : E_FAIL;
        }
        STDMETHODIMP LockServer(BOOL) override { return S_OK; }

    private:
        com::ComPtr<IUnknown> object_;
    };

    DWORD cookie_ = 0;
};

}  // namespace kel::test
