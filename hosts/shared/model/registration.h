#pragma once
// Whether components are registered as they must be, and what is to be done where they are not.
// Identifiers are texts with braces, all texts are UTF-8.

#include <functional>
#include <optional>
#include <span>
#include <string>
#include <vector>

namespace kel::host {

// What registration writes for a class, an interface and a library.
struct RegisteredClass {
    const char* name;
    const char* identifier;
    const char* program;  // the ProgID without its version
    const char* title;
    const char* classTitle;
    int bitmap;  // of a control; 0 for others
};
struct RegisteredInterface {
    const char* name;
    const char* identifier;
    const char* marshaller;
};
struct RegisteredLibrary {
    const char* file;
    const char* identifier;
    const char* version;
    const char* title;
    std::span<const RegisteredClass> classes;
    std::span<const RegisteredInterface> interfaces;
};

// A class of the instrument link that components create themselves.
struct LinkPart {
    const char* name;
    std::string identifier;
    const char* without;  // what cannot be done without it; null where nothing can
};

struct ImageFile {
    bool isThere = false;
    int bits = 0;         // 32 or 64; 0 when it is neither program nor library
    std::string version;  // empty when it tells none
};

// A value of the registry by its key below HKEY_CLASSES_ROOT and its name, which is empty for the
// default value. Nothing when it or its key is missing; a key without a default value has an empty
// one.
using ReadValue =
    std::function<std::optional<std::string>(const std::string& key, const std::string& name)>;

// What is looked at.
struct RegistrationSource {
    ReadValue user;
    ReadValue machine;
    std::function<ImageFile(const std::string& path)> file;

    // The manifest that makes a class known to this program.
    std::function<std::optional<std::string>(const std::string& identifier)> manifest;
};

enum class Place { kNowhere, kUser, kMachine, kManifest };

struct RegistrationReport {
    Place place = Place::kNowhere;
    std::string manifest;  // the path of the manifest, where it is one
    std::string file;
    ImageFile image;
    std::string contents;               // what was found, in words
    std::vector<std::string> notes;     // what is worth knowing, and no fault
    std::vector<std::string> faults;    // what is wrong
    std::vector<std::string> remedies;  // what to do about it

    // A remedy is told once.
    void addFault(const std::string& text, const std::string& remedy);
};

// Compares with all that registering the library writes.
RegistrationReport checkLibrary(const RegisteredLibrary& library, const RegistrationSource& source);

// The class behind a ProgID, and the classes that must or may stand beside it.
RegistrationReport checkLink(const std::string& program, std::span<const LinkPart> parts,
                             const RegistrationSource& source);

}  // namespace kel::host
