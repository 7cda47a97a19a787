#pragma once
// The living traced objects of a session.

#include <map>
#include <mutex>
#include <string>

#include "hosts/trace/traced_object.h"

namespace kel::trace {

// A traced object that lives at least as long as this.
class HeldObject {
public:
    HeldObject() = default;
    HeldObject(TracedObject* object, com::ComPtr<IUnknown> reference)
        : object_(object), reference_(std::move(reference)) {}

    explicit operator bool() const { return object_ != nullptr; }
    TracedObject* operator->() const { return object_; }

private:
    TracedObject* object_ = nullptr;
    com::ComPtr<IUnknown> reference_;
};

// Does not own them. There is one wrapper for each wrapped object while it lives, and no two living
// objects have the same name. Any thread.
class ObjectTable {
public:
    void add(TracedObject& object);
    // Nothing for an object that has been removed.
    void remove(TracedObject& object);

    // Nothing when there is none. `inner` is an identity (IUnknown).
    HeldObject named(const std::string& name) const { return held(byName_, name); }
    HeldObject around(IUnknown* inner) const { return held(byInner_, inner); }

    bool isEmpty() const;

    // The next name of a kind: serial1, serial2...
    std::string nextName(const std::string& kind);

private:
    template <class Key>
    HeldObject held(const std::map<Key, TracedObject*>& objects, const Key& key) const {
        const std::lock_guard lock(mutex_);
        const auto found = objects.find(key);
        if (found == objects.end()) return {};
        return hold(*found->second);
    }
    static HeldObject hold(TracedObject& object);

    mutable std::mutex mutex_;
    std::map<std::string, TracedObject*> byName_;
    std::map<IUnknown*, TracedObject*> byInner_;
    std::map<std::string, int> counts_;
};

}  // namespace kel::trace
