#pragma once
// Class objects of our own for the classes of the link that KelUtils creates by identifier.

#include <memory>
#include <vector>

#include "hosts/trace/session.h"

namespace kel::trace {

// While it lives, objects that the calling apartment creates are wrapped. Outside a replay only
// classes that can be created at all are registered; their real class objects are fetched first,
// for afterwards the platform finds ours.
class ClassObjects {
public:
    // Throws com::Error.
    explicit ClassObjects(const std::shared_ptr<Session>& session);
    ~ClassObjects();
    ClassObjects(const ClassObjects&) = delete;
    ClassObjects& operator=(const ClassObjects&) = delete;

private:
    void registerAll(const std::shared_ptr<Session>& session);
    void revokeAll();

    std::vector<DWORD> cookies_;
};

}  // namespace kel::trace
