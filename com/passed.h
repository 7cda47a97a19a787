#pragma once
// Objects that go from one thread to another.

#include <windows.h>

#include <objidl.h>

#include "com/error.h"

namespace kel::com {

// True for an object that may be called on any thread directly.
inline bool isAgile(IUnknown* object) {
    ComPtr<IAgileObject> agile;
    return SUCCEEDED(object->QueryInterface(IID_PPV_ARGS(&agile)));
}

// An interface in the process's table of them: made and destroyed on the object's own thread,
// fetched on any other. Throws Error.
template <class Interface>
class Passed {
public:
    explicit Passed(const ComPtr<Interface>& object) {
        check(CoCreateInstance(CLSID_StdGlobalInterfaceTable, nullptr, CLSCTX_INPROC_SERVER,
                               IID_PPV_ARGS(&table_)));
        check(table_->RegisterInterfaceInGlobal(object.Get(), __uuidof(Interface), &cookie_));
    }
    ~Passed() { table_->RevokeInterfaceFromGlobal(cookie_); }
    Passed(const Passed&) = delete;
    Passed& operator=(const Passed&) = delete;

    ComPtr<Interface> fetch() const {
        ComPtr<Interface> object;
        check(table_->GetInterfaceFromGlobal(cookie_, IID_PPV_ARGS(&object)));
        return object;
    }

private:
    ComPtr<IGlobalInterfaceTable> table_;
    DWORD cookie_ = 0;
};

}  // namespace kel::com
