#include "controls/multi_select_dialog.h"

#include "com/scoped.h"
#include "com/text.h"
#include "com/variant.h"

namespace kel::controls {

HRESULT MultiSelectDialog::ShowModal(long owner, VARIANT_BOOL* result) {
    return guarded<IMultiSelectDialog>([&] {
        com::out(result) = VARIANT_FALSE;
        if (isRunning_) return;
        const com::KeepAlive alive(*this);
        const com::Scoped running(isRunning_, true);
        const auto answers = SelectorDialog(*this, texts_, options_).ask(ui::livingWindow(owner));
        if (!answers) return;
        // Meanwhile the host may have added some.
        for (std::size_t i = 0; i < answers->size(); ++i)
            options_[i].isChecked = (*answers)[i];
        *result = VARIANT_TRUE;
    });
}

Option& MultiSelectDialog::at(long index) {
    if (index < 0 || static_cast<std::size_t>(index) >= options_.size())
        throw com::Error(DISP_E_BADINDEX, L"There is no option with this index");
    return options_[static_cast<std::size_t>(index)];
}

Option& MultiSelectDialog::at(const VARIANT& index) {
    const com::Variant key(index);
    if (key.type() != VT_BSTR) return at(key.convertedTo(VT_I4).get().lVal);
    for (Option& option : options_) {
        if (com::sameName(option.name, com::view(key.get().bstrVal))) return option;
    }
    throw com::Error(DISP_E_BADINDEX, L"There is no option with this name");
}

HRESULT MultiSelectDialog::get_Name(long index, BSTR* name) {
    return guarded<IMultiSelectDialog>([&] {
        com::out(name) = nullptr;
        *name = com::Bstr(at(index).name).release();
    });
}

HRESULT MultiSelectDialog::put_Name(long index, BSTR name) {
    return guarded<IMultiSelectDialog>([&] { at(index).name = com::view(name); });
}

HRESULT MultiSelectDialog::get_Value(VARIANT index, VARIANT_BOOL* isChecked) {
    return guarded<IMultiSelectDialog>([&] {
        com::out(isChecked) = VARIANT_FALSE;
        *isChecked = com::variantBool(at(index).isChecked);
    });
}

HRESULT MultiSelectDialog::put_Value(VARIANT index, VARIANT_BOOL isChecked) {
    return guarded<IMultiSelectDialog>([&] { at(index).isChecked = com::isTrue(isChecked); });
}

HRESULT MultiSelectDialog::Add(BSTR name, VARIANT_BOOL isChecked) {
    return guarded<IMultiSelectDialog>([&] {
        options_.push_back({std::wstring(com::view(name)), com::isTrue(isChecked)});
    });
}

HRESULT MultiSelectDialog::putText(std::wstring SelectorTexts::*member, BSTR text) {
    return guarded<IMultiSelectDialog>([&] { texts_.*member = com::view(text); });
}

HRESULT MultiSelectDialog::put_Title(BSTR text) {
    return putText(&SelectorTexts::title, text);
}

HRESULT MultiSelectDialog::put_Prompt(BSTR text) {
    return putText(&SelectorTexts::prompt, text);
}

HRESULT MultiSelectDialog::put_OKText(BSTR text) {
    return putText(&SelectorTexts::ok, text);
}

HRESULT MultiSelectDialog::put_CancelText(BSTR text) {
    return putText(&SelectorTexts::cancel, text);
}

}  // namespace kel::controls
