#pragma once
// The classes of this user in the place of everybody's.

#include "com/handles.h"

namespace kel::kelregister {

// As long as it lives, what this process writes below HKEY_CLASSES_ROOT goes to the user's own
// branch of the registry, and what it reads there comes from it.
class UserClasses {
public:
    // Throws com::Error.
    UserClasses();
    ~UserClasses();
    UserClasses(const UserClasses&) = delete;
    UserClasses& operator=(const UserClasses&) = delete;

    // Deletes the keys that all libraries share, where nothing is left in them.
    void removeEmptyRoots() const;

private:
    com::RegistryKeyHandle key_;
};

// False on a system that never looks into the user's branch for classes. Throws com::Error.
bool systemReadsUserClasses();

}  // namespace kel::kelregister
