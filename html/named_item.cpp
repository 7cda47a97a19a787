#include "html/named_item.h"

namespace kel::html {

com::ComPtr<IDispatch> NamedItem::standsFor() {
    const com::ComPtr<IKelObjects> table = table_->objects;
    com::ComPtr<IDispatch> object;
    if (table) com::check(table->get_Item(name_.get(), &object), table);
    if (!object) throw com::Error(DISP_E_BADINDEX, L"The object is no longer in the table");
    return object;
}

HRESULT NamedItem::GetTypeInfoCount(UINT* count) {
    return com::guardLateBound([&] { return standsFor()->GetTypeInfoCount(count); });
}

HRESULT NamedItem::GetTypeInfo(UINT index, LCID locale, ITypeInfo** type) {
    return com::guardLateBound([&] { return standsFor()->GetTypeInfo(index, locale, type); });
}

HRESULT NamedItem::GetIDsOfNames(REFIID iid, LPOLESTR* names, UINT count, LCID locale,
                                 DISPID* identifiers) {
    return com::guardLateBound(
        [&] { return standsFor()->GetIDsOfNames(iid, names, count, locale, identifiers); });
}

HRESULT NamedItem::Invoke(DISPID member, REFIID iid, LCID locale, WORD flags, DISPPARAMS* arguments,
                          VARIANT* result, EXCEPINFO* exception, UINT* badArgument) {
    return com::guardLateBound([&] {
        return standsFor()->Invoke(member, iid, locale, flags, arguments, result, exception,
                                   badArgument);
    });
}

}  // namespace kel::html
