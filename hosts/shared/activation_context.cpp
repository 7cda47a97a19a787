#include "hosts/shared/activation_context.h"

#include <cstddef>
#include <vector>

#include "com/error.h"
#include "com/text.h"
#include "hosts/shared/error_text.h"
#include "hosts/shared/model/failure.h"
#include "hosts/shared/program_folder.h"

namespace kel::host {
namespace {

constexpr wchar_t kManifest[] = L"KelUtils.manifest";

}  // namespace

ActivationContext::ActivationContext(const std::wstring& manifest) {
    const std::wstring folder = manifest.substr(0, manifest.rfind(L'\\'));
    ACTCTXW request{};
    request.cbSize = sizeof request;
    request.dwFlags = ACTCTX_FLAG_ASSEMBLY_DIRECTORY_VALID;
    request.lpSource = manifest.c_str();
    request.lpAssemblyDirectory = folder.c_str();
    context_ = CreateActCtxW(&request);
    if (context_ == INVALID_HANDLE_VALUE) throw com::lastError();
    if (ActivateActCtx(context_, &cookie_)) return;
    const com::Error error = com::lastError();
    ReleaseActCtx(context_);
    throw error;
}

ActivationContext::~ActivationContext() {
    DeactivateActCtx(0, cookie_);
    ReleaseActCtx(context_);
}

std::unique_ptr<ActivationContext> manifestBesideProgram() {
    const std::wstring path = programFolder() + kManifest;
    if (GetFileAttributesW(path.c_str()) == INVALID_FILE_ATTRIBUTES) return nullptr;
    try {
        return std::make_unique<ActivationContext>(path);
    } catch (const com::Error& error) {
        throw Failure(ExitCode::kNotRegistered,
                      com::narrow(std::wstring_view(path), CP_UTF8) + ": " + describe(error));
    }
}

std::optional<std::wstring> manifestOf(REFCLSID identifier) {
    ACTCTX_SECTION_KEYED_DATA found{};
    found.cbSize = sizeof found;
    if (!FindActCtxSectionGuid(FIND_ACTCTX_SECTION_KEY_RETURN_HACTCTX, nullptr,
                               ACTIVATION_CONTEXT_SECTION_COM_SERVER_REDIRECTION, &identifier,
                               &found)) {
        return std::nullopt;
    }
    SIZE_T size = 0;
    QueryActCtxW(0, found.hActCtx, &found.ulAssemblyRosterIndex,
                 AssemblyDetailedInformationInActivationContext, nullptr, 0, &size);
    std::vector<std::max_align_t> details(size / sizeof(std::max_align_t) + 1);
    auto* assembly =
        reinterpret_cast<ACTIVATION_CONTEXT_ASSEMBLY_DETAILED_INFORMATION*>(details.data());
    const BOOL isTold =
        QueryActCtxW(0, found.hActCtx, &found.ulAssemblyRosterIndex,
                     AssemblyDetailedInformationInActivationContext, assembly, size, nullptr);
    ReleaseActCtx(found.hActCtx);
    if (!isTold || !assembly->lpAssemblyManifestPath) return std::wstring();
    return std::wstring(assembly->lpAssemblyManifestPath);
}

}  // namespace kel::host
