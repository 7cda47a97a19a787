#pragma once
// Makes the platform fail for one loaded library, so that the product needs no seam for tests.

#include <windows.h>

namespace kel::test {

// Replaces a function that a loaded library imports, as long as the object lives.
class ImportPatch {
public:
    // Throws when the library does not import the function.
    ImportPatch(HMODULE library, const char* function, void* replacement);
    ~ImportPatch() { write(original_); }
    ImportPatch(const ImportPatch&) = delete;
    ImportPatch& operator=(const ImportPatch&) = delete;

    // The function that was replaced.
    template <class Function>
    Function* original() const {
        return reinterpret_cast<Function*>(original_);
    }

private:
    void write(void* function);

    void** slot_;
    void* original_;
};

}  // namespace kel::test
