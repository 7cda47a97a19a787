#pragma once
// Objects that scripts of an automation language reach, made of functions.

#include <functional>
#include <string>
#include <utility>
#include <vector>

#include "com/object.h"
#include "com/variant.h"

namespace kel::kelrun {

// Its members are called by name, as methods or as properties that are read. The first one is what
// the object itself is where a script calls it.
class ScriptObject final : public com::Object<ScriptObject, com::Plain<IDispatch>> {
public:
    static constexpr com::ClassDescription kClass{};

    using Arguments = std::vector<com::Variant>;
    // Gives the result. What it throws is an exception of the script, with its text.
    using Function = std::function<com::Variant(const Arguments& arguments)>;
    struct Member {
        std::wstring name;
        Function function;
    };

    explicit ScriptObject(std::vector<Member> members) : members_(std::move(members)) {}

    STDMETHODIMP GetTypeInfoCount(UINT* count) override;
    STDMETHODIMP GetTypeInfo(UINT, LCID, ITypeInfo**) override { return E_NOTIMPL; }
    STDMETHODIMP GetIDsOfNames(REFIID, LPOLESTR* names, UINT count, LCID,
                               DISPID* identifiers) override;
    STDMETHODIMP Invoke(DISPID member, REFIID, LCID, WORD flags, DISPPARAMS* parameters,
                        VARIANT* result, EXCEPINFO* exception, UINT*) override;

private:
    // A member's identifier is its place here; that of the first one is DISPID_VALUE.
    std::vector<Member> members_;
};

}  // namespace kel::kelrun
