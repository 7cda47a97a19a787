#include "ole/site.h"

#include <olectl.h>

namespace kel::ole {

std::optional<com::Variant> Site::ambient(DISPID property, VARTYPE type) const {
    const auto container = as<IDispatch>();
    DISPPARAMS none{};
    com::Variant value;
    if (!container ||
        FAILED(container->Invoke(property, IID_NULL, LOCALE_USER_DEFAULT, DISPATCH_PROPERTYGET,
                                 &none, value.put(), nullptr, nullptr))) {
        return std::nullopt;
    }
    VARIANT converted;
    VariantInit(&converted);
    if (FAILED(VariantChangeType(&converted, const_cast<VARIANT*>(&value.get()), 0, type)))
        return std::nullopt;
    *value.put() = converted;
    return value;
}

bool Site::isInUse() const {
    const auto inUse = ambient(DISPID_AMBIENT_USERMODE, VT_BOOL);
    return !inUse || com::isTrue(inUse->get().boolVal);
}

bool Site::isDead() const {
    const auto dead = ambient(DISPID_AMBIENT_UIDEAD, VT_BOOL);
    return dead && com::isTrue(dead->get().boolVal);
}

}  // namespace kel::ole
