#include "hosts/trace/traced_object.h"

#include "hosts/trace/session.h"

namespace kel::trace {
namespace {

com::ComPtr<IUnknown> identityOf(IUnknown* object) {
    com::ComPtr<IUnknown> identity;
    if (object) com::check(object->QueryInterface(IID_PPV_ARGS(&identity)));
    return identity;
}

}  // namespace

TracedObject::TracedObject(std::shared_ptr<Session> session, std::string name, IUnknown* inner,
                           IUnknown* self)
    : session_(std::move(session)), name_(std::move(name)), inner_(identityOf(inner)), self_(self) {
    session_->objects().add(*this);
}

TracedObject::~TracedObject() {
    session_->objects().remove(*this);
}

TracedObject* TracedObject::from(IUnknown* object) {
    com::ComPtr<ITraced> traced;
    if (!object || FAILED(object->QueryInterface(IID_PPV_ARGS(&traced)))) return nullptr;
    return traced->traced();
}

}  // namespace kel::trace
