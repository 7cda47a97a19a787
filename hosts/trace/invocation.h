#pragma once
// One call on a traced object, as the session sees it.

#include <windows.h>

#include <functional>

#include "hosts/trace/model/event.h"
#include "hosts/trace/traced_object.h"

namespace kel::trace {

// What a replay does with a call. Recordings tell all of them.
enum class Treatment {
    kCompared,
    kRepeatable,  // compared; several in a row count as one
    kConnecting,  // compared; answers also by the thread's last error
    kState,       // not compared: a question that the last known answer answers
    kPolled,      // not compared: depends on timing
    kLocal        // not compared: the wrapper knows the answer itself
};

// `forward` calls the wrapped object. The other members reach the results: `out` tells them after a
// success, `clear` empties them (null pointers are left alone), `give` sets recorded ones after
// clear() and throws com::Error for a null pointer.
struct Invocation {
    TracedObject& object;
    const IID& interfaceId;
    const char* interfaceName;
    const char* method;
    Treatment treatment;
    std::function<HRESULT()> forward;
    std::function<Json::Array()> in = [] { return Json::Array(); };
    std::function<Json::Array()> out = [] { return Json::Array(); };
    std::function<void()> clear = [] {};
    std::function<void(const Json::Array&)> give = [](const Json::Array&) {};
    // What it is given must not stand in a recording.
    bool isSecret = false;
};

}  // namespace kel::trace
