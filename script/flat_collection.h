#pragma once
// The ordered, name-indexed collection in which words receive their parameters.

#include <span>
#include <string>
#include <vector>

#include "com/object.h"
#include "com/variant.h"
#include "interfaces/KelUtils.h"

namespace kel::script {

class FlatCollection final : public com::Object<FlatCollection, com::Dual<IFlatCollection>> {
public:
    static constexpr com::ClassDescription kClass{nullptr, L"KelUtils.Preprocessor.1"};

    // The parameters of a word, named by their position. Throws.
    static com::ComPtr<FlatCollection> of(std::span<const std::string> parameters);

    // Appends a text. Throws.
    void append(std::wstring name, std::string_view value);

    STDMETHODIMP get_Count(long* count) override;
    STDMETHODIMP get_Item(VARIANT index, VARIANT* value) override;
    STDMETHODIMP get_Name(long index, BSTR* name) override;
    STDMETHODIMP Add(BSTR name, VARIANT value) override;
    STDMETHODIMP get__NewEnum(IUnknown** enumerator) override;

private:
    struct Entry {
        std::wstring name;
        com::Variant value;
    };

    const Entry& find(const VARIANT& index) const;

    std::vector<Entry> entries_;
};

}  // namespace kel::script
