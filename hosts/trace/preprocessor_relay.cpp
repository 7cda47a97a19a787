#include "hosts/trace/preprocessor_relay.h"

#include "com/text.h"

namespace kel::trace {

HRESULT PreprocessorRelay::PreprocessAndRun(BSTR script, VARIANT_BOOL* result) {
    const com::KeepAlive alive(*this);
    session_->tellScript(link_, com::view(script));
    const HRESULT code = target_->PreprocessAndRun(script, result);
    session_->tellScriptEnd(code);
    return code;
}

}  // namespace kel::trace
