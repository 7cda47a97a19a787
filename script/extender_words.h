#pragma once
// The words that a host has added by functions of its own.

#include <string>
#include <vector>

#include "com/object.h"
#include "interfaces/KelUtils.h"

namespace kel::script {

// Installed in a preprocessor, which holds it. A word's number is its place here.
class ExtenderWords final : public com::Object<ExtenderWords, com::Dual<IPreprocessorExtension>> {
public:
    static constexpr com::ClassDescription kClass{nullptr, L"KelUtils.PreprocessorExtender.1"};

    // `preprocessor` is the one that calls the words, and outlives its calls.
    explicit ExtenderWords(IPreprocessorControl& preprocessor) : preprocessor_(preprocessor) {}

    // Null where no word is handled any more.
    void setHandlers(IDispatch* directives, IDispatch* functions);
    // Gives the number of the new word.
    int add(std::wstring name);

    STDMETHODIMP DirectiveHandler(IKelCommunicator* communicator, long directive,
                                  IFlatCollection* parameters, VARIANT_BOOL* handled,
                                  VARIANT_BOOL* result) override;
    STDMETHODIMP FunctionHandler(IKelCommunicator* communicator, long function,
                                 IFlatCollection* parameters, BSTR* value, VARIANT_BOOL* handled,
                                 VARIANT_BOOL* result) override;

private:
    // What a handler gives for a word, as the wanted type; empty where it passes the word on. Where
    // it throws, or gives something else, that is told as an error of the script, and the exception
    // passes on.
    com::Variant ask(com::ComPtr<IDispatch> handler, long word, IFlatCollection* parameters,
                     VARTYPE wanted);

    IPreprocessorControl& preprocessor_;
    com::ComPtr<IDispatch> directives_;
    com::ComPtr<IDispatch> functions_;
    std::vector<std::wstring> names_;
};

}  // namespace kel::script
