#pragma once
// Access objects of the link's library, which do a service's work on the instrument: how they are
// made and asked. Everything throws com::Error when the link's library fails.

#include "com/creation.h"
#include "com/error.h"
#include "com/variant.h"
#include "interfaces/KelUtils.h"

namespace kel::service {

template <class Interface>
com::ComPtr<Interface> makeAccess(REFCLSID identifier, const com::ComPtr<IKelCommunicator>& link) {
    com::ComPtr<Interface> access;
    com::check(com::createStarted(identifier, access));
    com::check(access->Attach(link.Get()), access);
    return access;
}

// What a member without parameters gives: ask<double>(compass, &ICompassAccess::get_Roll).
template <class Value, class Interface, class Member>
Value ask(const com::ComPtr<Interface>& object, Member member) {
    Value value{};
    com::check((object.Get()->*member)(&value), object);
    return value;
}

template <class Interface, class Member>
bool isSo(const com::ComPtr<Interface>& object, Member member) {
    return com::isTrue(ask<VARIANT_BOOL>(object, member));
}

}  // namespace kel::service
