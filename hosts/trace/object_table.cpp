#include "hosts/trace/object_table.h"

namespace kel::trace {
namespace {

template <class Key>
void eraseIf(std::map<Key, TracedObject*>& objects, const Key& key, const TracedObject& object) {
    const auto found = objects.find(key);
    if (found != objects.end() && found->second == &object) objects.erase(found);
}

}  // namespace

// An object that is just being destroyed on another thread is still in the table: its count has
// been at nothing before, and nothing that is done to it any more revives it.
HeldObject ObjectTable::hold(TracedObject& object) {
    constexpr ULONG kDestroyed = 0x40000000;
    const ULONG count = object.self()->AddRef();
    if (count == 1 || count >= kDestroyed) return {};
    HeldObject held(&object, object.self());
    object.self()->Release();
    return held;
}

void ObjectTable::add(TracedObject& object) {
    // Let go when the lock has been: it may be the last reference.
    const HeldObject known = around(object.innerObject());
    const std::lock_guard lock(mutex_);
    byName_[object.name()] = &object;
    // A part of a wrapper has the inner object of the whole, which stays the one to be found.
    if (object.innerObject() && !known) byInner_[object.innerObject()] = &object;
}

void ObjectTable::remove(TracedObject& object) {
    const std::lock_guard lock(mutex_);
    eraseIf(byName_, object.name(), object);
    eraseIf(byInner_, object.innerObject(), object);
}

bool ObjectTable::isEmpty() const {
    const std::lock_guard lock(mutex_);
    return byName_.empty();
}

std::string ObjectTable::nextName(const std::string& kind) {
    const std::lock_guard lock(mutex_);
    return kind + std::to_string(++counts_[kind]);
}

}  // namespace kel::trace
