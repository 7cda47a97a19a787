#include "script/preprocessor_extender.h"

#include "com/text.h"

namespace kel::script {

HRESULT PreprocessorExtender::get_Preprocessor(IPreprocessor** preprocessor) {
    return guarded<IPreprocessorExtender>([&] {
        com::out(preprocessor) = nullptr;
        com::ComPtr<IPreprocessor>(preprocessor_.Get()).CopyTo(preprocessor);
    });
}

HRESULT PreprocessorExtender::put_Preprocessor(IPreprocessor* preprocessor) {
    return guarded<IPreprocessorExtender>([&] {
        com::ComPtr<IPreprocessorControl> control;
        if (preprocessor && FAILED(preprocessor->QueryInterface(IID_PPV_ARGS(&control))))
            throw com::Error(E_INVALIDARG, L"This is no preprocessor that can be extended");
        preprocessor_ = control;
        words_ = nullptr;
    });
}

HRESULT PreprocessorExtender::SetHandlers(IDispatch* directives, IDispatch* functions) {
    return guarded<IPreprocessorExtender>([&] {
        directives_ = directives;
        functions_ = functions;
        if (words_) words_->setHandlers(directives, functions);
    });
}

void PreprocessorExtender::install(BSTR name, Install method) {
    if (!preprocessor_)
        throw com::Error(E_INVALIDARG, L"The extender has no preprocessor for its words");
    if (com::view(name).empty()) throw com::Error(E_INVALIDARG, L"A word needs a name");
    if (!words_) {
        words_ = com::makeObject<ExtenderWords>(*preprocessor_.Get());
        words_->setHandlers(directives_.Get(), functions_.Get());
    }
    const int number = words_->add(std::wstring(com::view(name)));
    com::check((preprocessor_.Get()->*method)(name, words_.Get(), number), preprocessor_);
}

HRESULT PreprocessorExtender::InstallDirective(BSTR name) {
    return guarded<IPreprocessorExtender>(
        [&] { install(name, &IPreprocessorImpl::InstallCustomDirective); });
}

HRESULT PreprocessorExtender::InstallFunction(BSTR name) {
    return guarded<IPreprocessorExtender>(
        [&] { install(name, &IPreprocessorImpl::InstallCustomFunction); });
}

}  // namespace kel::script
