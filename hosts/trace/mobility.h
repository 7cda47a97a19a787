#pragma once
// How objects go from thread to thread, and wrappers that go the same way.

#include <windows.h>

#include "com/error.h"
#include "hosts/model/json.h"

namespace kel::trace {

struct Mobility {
    // The object says that any thread may call it.
    bool isAgile = false;
    // It goes to other threads as it is, without a proxy.
    bool isFree = false;

    static Mobility of(IUnknown* object);

    // In recordings; nothing for an object that does neither.
    hosts::Json toJson() const;
    static Mobility fromJson(const hosts::Json& json);
};

// What a wrapper answers when it is asked how it goes to other threads.
class Passage {
public:
    static bool isAskedFor(REFIID iid) { return iid == IID_IAgileObject || iid == IID_IMarshal; }

    // Before it is asked anything. Throws com::Error.
    void open(const Mobility& mobility, IUnknown* wrapper);

    // Gives the interface that is asked for, where the wrapper has it.
    HRESULT give(REFIID iid, IUnknown* wrapper, void** result) const;

private:
    bool isAgile_ = false;
    com::ComPtr<IUnknown> marshaler_;
};

}  // namespace kel::trace
