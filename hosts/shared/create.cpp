#include "hosts/shared/create.h"

#include "com/text.h"
#include "hosts/shared/error_text.h"
#include "hosts/shared/model/failure.h"

namespace kel::host {
namespace {

[[noreturn]] void reportMissing(const ComponentNames& names, HRESULT code) {
    throw Failure(ExitCode::kNotRegistered,
                  names.component + " is not registered (" + codeText(code) + "): " + names.remedy);
}

}  // namespace

CLSID classOf(const std::string& programIdentifier, const ComponentNames& names) {
    CLSID identifier;
    const HRESULT code =
        CLSIDFromProgID(com::widen(programIdentifier, CP_UTF8).c_str(), &identifier);
    if (FAILED(code)) reportMissing(names, code);
    return identifier;
}

void createComponent(REFCLSID identifier, const ComponentNames& names, REFIID iid, void** result) {
    const HRESULT code = CoCreateInstance(identifier, nullptr, CLSCTX_INPROC_SERVER, iid, result);
    if (SUCCEEDED(code)) return;
    if (code == REGDB_E_CLASSNOTREG) reportMissing(names, code);
    if (code == E_NOINTERFACE) {
        throw Failure(
            ExitCode::kNotRegistered,
            names.component + " is of another kind or version: it has no " + interfaceName(iid));
    }
    throw Failure(ExitCode::kNotRegistered,
                  names.component + " cannot be created: " + describe(com::Error(code, {}, iid)));
}

}  // namespace kel::host
