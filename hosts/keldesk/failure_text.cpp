#include "hosts/keldesk/failure_text.h"

#include <cwctype>
#include <exception>

#include "com/error.h"
#include "hosts/keldesk/wide.h"
#include "hosts/shared/error_text.h"
#include "hosts/shared/model/failure.h"

namespace kel::keldesk {

std::wstring failureText() {
    try {
        throw;
    } catch (const com::Error& error) {
        return wide(host::describe(error));
    } catch (const host::Failure& failure) {
        std::wstring text = wide(failure.what());
        // A sentence: no program's name stands before it, as in a command's output. Others begin
        // with a name of their own.
        if (failure.code() == host::ExitCode::kNoConnection && !text.empty())
            text[0] = static_cast<wchar_t>(std::towupper(text[0]));
        return text;
    } catch (const std::exception& error) {
        return wide(error.what());
    }
}

}  // namespace kel::keldesk
