#pragma once
// The living traced objects of a session.

#include <map>
#include <string>

#include "hosts/trace/traced_object.h"

namespace kel::trace {

// Does not own them. There is one wrapper for each wrapped object while it lives, and no two living
// objects have the same name.
class ObjectTable {
public:
    void add(TracedObject& object) {
        byName_[object.name()] = &object;
        if (object.innerObject()) byInner_[object.innerObject()] = &object;
    }
    // Nothing for an object that has been removed.
    void remove(TracedObject& object) {
        if (named(object.name()) == &object) byName_.erase(object.name());
        if (around(object.innerObject()) == &object) byInner_.erase(object.innerObject());
    }

    // Null when there is none. `inner` is an identity (IUnknown).
    TracedObject* named(const std::string& name) const { return find(byName_, name); }
    TracedObject* around(IUnknown* inner) const { return find(byInner_, inner); }

    bool isEmpty() const { return byName_.empty(); }

    // The next name of a kind: serial1, serial2...
    std::string nextName(const std::string& kind) { return kind + std::to_string(++counts_[kind]); }

private:
    template <class Key>
    static TracedObject* find(const std::map<Key, TracedObject*>& objects, const Key& key) {
        const auto found = objects.find(key);
        return found == objects.end() ? nullptr : found->second;
    }

    std::map<std::string, TracedObject*> byName_;
    std::map<IUnknown*, TracedObject*> byInner_;
    std::map<std::string, int> counts_;
};

}  // namespace kel::trace
