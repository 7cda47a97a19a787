#include "hosts/trace/class_objects.h"

#include "com/object.h"
#include "hosts/trace/arguments.h"
#include "hosts/trace/invocation.h"
#include "hosts/trace/kinds.h"

namespace kel::trace {
namespace {

class WrappingFactory final : public com::Object<WrappingFactory, com::Plain<IClassFactory>>,
                              public TracedObject {
public:
    static constexpr com::ClassDescription kClass{};

    WrappingFactory(std::shared_ptr<Session> session, const Kind& kind, IClassFactory* real)
        : TracedObject(std::move(session), std::string(kind.name) + "Class", real,
                       com::ObjectCore::inner()),
          kind_(kind),
          real_(real) {}

    IUnknown* wrapper() override { return controlling(); }

    STDMETHODIMP CreateInstance(IUnknown* outer, REFIID iid, void** result) override {
        if (!result) return E_POINTER;
        *result = nullptr;
        if (outer) return CLASS_E_NOAGGREGATION;
        const com::KeepAlive alive(*this);
        com::ComPtr<IUnknown> made;
        const HRESULT code = guarded<IClassFactory>([&] { return create(made); });
        return SUCCEEDED(code) ? made->QueryInterface(iid, result) : code;
    }

    STDMETHODIMP LockServer(BOOL lock) override { return real_ ? real_->LockServer(lock) : S_OK; }

private:
    HRESULT create(com::ComPtr<IUnknown>& made) {
        Invocation call{
            *this, IID_IClassFactory, "IClassFactory", "CreateInstance", Treatment::kCompared, {}};
        call.out = [&] { return told(made.Get()); };
        call.give = [&](const Json::Array& values) { made = replayed(sharedSession(), values); };
        call.forward = [&] {
            com::ComPtr<IUnknown> inner;
            const HRESULT code = real_->CreateInstance(nullptr, IID_PPV_ARGS(&inner));
            if (SUCCEEDED(code)) made = wrap(sharedSession(), inner.Get());
            return code;
        };
        return session().perform(call);
    }

    const Kind& kind_;
    const com::ComPtr<IClassFactory> real_;
};

com::ComPtr<IClassFactory> realClassObject(REFCLSID identifier) {
    com::ComPtr<IClassFactory> real;
    CoGetClassObject(identifier, CLSCTX_INPROC_SERVER, nullptr, IID_PPV_ARGS(&real));
    return real;
}

}  // namespace

ClassObjects::ClassObjects(const std::shared_ptr<Session>& session) {
    try {
        registerAll(session);
    } catch (...) {
        revokeAll();
        throw;
    }
}

ClassObjects::~ClassObjects() {
    revokeAll();
}

void ClassObjects::registerAll(const std::shared_ptr<Session>& session) {
    for (const Kind& kind : kinds()) {
        if (!kind.classId) continue;
        com::ComPtr<IClassFactory> real;
        if (!session->isReplay()) {
            real = realClassObject(*kind.classId);
            if (!real) continue;
        }
        const auto factory = com::makeObject<WrappingFactory>(session, kind, real.Get());
        DWORD cookie = 0;
        com::check(CoRegisterClassObject(*kind.classId, factory->wrapper(), CLSCTX_INPROC_SERVER,
                                         REGCLS_MULTIPLEUSE, &cookie));
        cookies_.push_back(cookie);
    }
}

void ClassObjects::revokeAll() {
    for (const DWORD cookie : cookies_)
        CoRevokeClassObject(cookie);
}

}  // namespace kel::trace
