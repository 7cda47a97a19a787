#pragma once
// How components refuse, checked for every member that the type library knows.

#include <windows.h>

#include <oleauto.h>

#include <string_view>

namespace kel::test {

// Expects that a failure was published, with words; with the ProgID of the component, that and the
// interface are expected too.
void expectTold(std::wstring_view source, const IID& interfaceId);

// Calls every member of a dual interface and its bases without a place for one of its results, for
// each: it must refuse, and tell why. `object` is the interface itself, as its QueryInterface gives
// it.
void expectNullPointersRefused(IDispatch* object, std::wstring_view source = {});

// Calls every member with zeros, early and late bound. One that refuses must tell why, and who.
// `except` would wait for a user.
void expectFailuresExplained(IDispatch* object, std::wstring_view source, std::string_view except);

}  // namespace kel::test
