#pragma once
// The KelObjects component: a table of named objects for scripts.

#include <set>
#include <string>
#include <vector>

#include "com/object.h"
#include "com/variant.h"
#include "html/object_table.h"
#include "interfaces/KelUtils.h"

namespace kel::html {

// In the order in which names came. Names are compared without regard to case; the spelling that
// came first stays.
class KelObjects final : public com::Object<KelObjects, com::Dual<IKelObjects2, IKelObjects>,
                                            com::Plain<ITableSource>> {
public:
    static constexpr com::ClassDescription kClass{&CLSID_KelObjects, L"KelUtils.KelObjects.1"};

    STDMETHODIMP get_Item(BSTR name, IDispatch** object) override;
    STDMETHODIMP put_Item(BSTR name, IDispatch* object) override;
    STDMETHODIMP get_Count(long* count) override;
    STDMETHODIMP get_Name(long index, BSTR* name) override;
    STDMETHODIMP get_At(VARIANT index, IDispatch** object) override;
    STDMETHODIMP put_At(VARIANT index, IDispatch* object) override;

    // IKelObjects2
    STDMETHODIMP get__NewEnum(IUnknown** enumerator) override;

    void addListener(TableListener& listener) override { listeners_.insert(&listener); }
    void removeListener(TableListener& listener) override { listeners_.erase(&listener); }

private:
    struct Entry {
        std::wstring name;
        com::ComPtr<IDispatch> object;
    };
    using Entries = std::vector<Entry>;

    Entries::iterator find(std::wstring_view name);
    // Both throw Error for what is not there.
    Entries::iterator at(std::wstring_view name);
    Entries::iterator at(const VARIANT& index);
    void put(std::wstring_view name, IDispatch* object);

    Entries entries_;
    std::set<TableListener*> listeners_;
};

}  // namespace kel::html
