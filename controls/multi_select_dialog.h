#pragma once
// The MultiSelectDialog component: the user ticks any number of named options.

#include <vector>

#include "com/object.h"
#include "controls/selector_dialog.h"
#include "interfaces/KelUtils.h"

namespace kel::controls {

class MultiSelectDialog final
    : public com::Object<MultiSelectDialog, com::Dual<IMultiSelectDialog>> {
public:
    static constexpr com::ClassDescription kClass{&CLSID_MultiSelectDialog,
                                                  L"KelUtils.MultiSelectDialog.1"};

    STDMETHODIMP ShowModal(long owner, VARIANT_BOOL* result) override;
    STDMETHODIMP get_Name(long index, BSTR* name) override;
    STDMETHODIMP put_Name(long index, BSTR name) override;
    STDMETHODIMP get_Value(VARIANT index, VARIANT_BOOL* isChecked) override;
    STDMETHODIMP put_Value(VARIANT index, VARIANT_BOOL isChecked) override;
    STDMETHODIMP Add(BSTR name, VARIANT_BOOL isChecked) override;
    STDMETHODIMP put_Title(BSTR text) override;
    STDMETHODIMP put_Prompt(BSTR text) override;
    STDMETHODIMP put_OKText(BSTR text) override;
    STDMETHODIMP put_CancelText(BSTR text) override;

private:
    Option& at(long index);
    Option& at(const VARIANT& index);
    HRESULT putText(std::wstring SelectorTexts::*member, BSTR text);

    SelectorTexts texts_;
    std::vector<Option> options_;
    bool isRunning_ = false;
};

}  // namespace kel::controls
