#include "tests/wine/support/import_patch.h"

#include <cstring>
#include <stdexcept>
#include <string>

namespace kel::test {
namespace {

template <class Value>
Value* at(HMODULE library, DWORD address) {
    return reinterpret_cast<Value*>(reinterpret_cast<char*>(library) + address);
}

void** findSlot(HMODULE library, const char* function) {
    const auto* headers = at<IMAGE_NT_HEADERS>(library, at<IMAGE_DOS_HEADER>(library, 0)->e_lfanew);
    const auto& directory = headers->OptionalHeader.DataDirectory[IMAGE_DIRECTORY_ENTRY_IMPORT];
    auto* imported = at<IMAGE_IMPORT_DESCRIPTOR>(library, directory.VirtualAddress);
    for (; imported->Name != 0; ++imported) {
        const auto* names = at<IMAGE_THUNK_DATA>(library, imported->OriginalFirstThunk);
        auto** slots = at<void*>(library, imported->FirstThunk);
        for (; names->u1.AddressOfData != 0; ++names, ++slots) {
            if (IMAGE_SNAP_BY_ORDINAL(names->u1.Ordinal)) continue;
            const auto* name = at<IMAGE_IMPORT_BY_NAME>(library, names->u1.AddressOfData);
            if (std::strcmp(reinterpret_cast<const char*>(name->Name), function) == 0) return slots;
        }
    }
    throw std::runtime_error(std::string("The library does not import ") + function);
}

}  // namespace

ImportPatch::ImportPatch(HMODULE library, const char* function, void* replacement)
    : slot_(findSlot(library, function)), original_(*slot_) {
    write(replacement);
}

void ImportPatch::write(void* function) {
    DWORD protection = 0;
    VirtualProtect(slot_, sizeof *slot_, PAGE_READWRITE, &protection);
    *slot_ = function;
    VirtualProtect(slot_, sizeof *slot_, protection, &protection);
}

}  // namespace kel::test
