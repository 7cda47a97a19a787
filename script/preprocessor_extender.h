#pragma once
// The PreprocessorExtender component: adds words to the script language from any automation
// language.

#include "com/object.h"
#include "interfaces/KelUtils.h"
#include "script/extender_words.h"

namespace kel::script {

class PreprocessorExtender final
    : public com::Object<PreprocessorExtender, com::Dual<IPreprocessorExtender>> {
public:
    static constexpr com::ClassDescription kClass{&CLSID_PreprocessorExtender,
                                                  L"KelUtils.PreprocessorExtender.1"};

    STDMETHODIMP get_Preprocessor(IPreprocessor** preprocessor) override;
    STDMETHODIMP put_Preprocessor(IPreprocessor* preprocessor) override;
    STDMETHODIMP SetHandlers(IDispatch* directives, IDispatch* functions) override;
    STDMETHODIMP InstallDirective(BSTR name) override;
    STDMETHODIMP InstallFunction(BSTR name) override;

private:
    using Install = HRESULT (STDMETHODCALLTYPE IPreprocessorImpl::*)(BSTR, IPreprocessorExtension*,
                                                                     int);
    void install(BSTR name, Install method);

    com::ComPtr<IPreprocessorControl> preprocessor_;
    com::ComPtr<ExtenderWords> words_;
    com::ComPtr<IDispatch> directives_;
    com::ComPtr<IDispatch> functions_;
};

}  // namespace kel::script
