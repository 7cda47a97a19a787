#pragma once
// A name that scripts know, and the object that the table has under it at the moment.

#include <memory>
#include <string>

#include "com/object.h"
#include "com/stand_in.h"
#include "com/text.h"
#include "interfaces/KelUtils.h"

namespace kel::html {

// The table that a script host has at the moment; null for none.
struct CurrentTable {
    com::ComPtr<IKelObjects> objects;
};

// Passes everything on to that object. So what scripts reach by a name follows the table, though
// the script engine learns each name only once. While there is no object of that name, calls fail.
class NamedItem final
    : public com::Object<NamedItem, com::Plain<IDispatch>, com::Plain<com::IStandIn>> {
public:
    static constexpr com::ClassDescription kClass{};

    NamedItem(std::shared_ptr<const CurrentTable> table, const std::wstring& name)
        : table_(std::move(table)), name_(std::wstring_view(name)) {}

    STDMETHODIMP GetTypeInfoCount(UINT* count) override;
    STDMETHODIMP GetTypeInfo(UINT index, LCID locale, ITypeInfo** type) override;
    STDMETHODIMP GetIDsOfNames(REFIID iid, LPOLESTR* names, UINT count, LCID locale,
                               DISPID* identifiers) override;
    STDMETHODIMP Invoke(DISPID member, REFIID iid, LCID locale, WORD flags, DISPPARAMS* arguments,
                        VARIANT* result, EXCEPINFO* exception, UINT* badArgument) override;

    com::ComPtr<IDispatch> standsFor() override;

private:
    std::shared_ptr<const CurrentTable> table_;
    com::Bstr name_;
};

}  // namespace kel::html
