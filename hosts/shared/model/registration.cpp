#include "hosts/shared/model/registration.h"

#include <algorithm>
#include <cctype>
#include <map>

namespace kel::host {
namespace {

constexpr std::size_t kFewInterfaces = 5;

constexpr char kRegisterAgain[] =
    "register it again: kelregister KelUtils.dll for this user, or, as an administrator, regsvr32 "
    "KelUtils.dll (on 64-bit Windows the one in SysWOW64) for all";
constexpr char kRegister[] =
    "register it: kelregister KelUtils.dll for this user, or, as an administrator, regsvr32 "
    "KelUtils.dll (on 64-bit Windows the one in SysWOW64) for all; or put KelUtils.manifest and "
    "KelUtils.dll into the folder of the program";
constexpr char kMoved[] = "put the file back to its place, or register the library where it is now";
constexpr char kWrongFile[] = "put the 32-bit library into its place, or register that one";
constexpr char kSameVersion[] = "take KelUtils.manifest and KelUtils.dll of the same version";
constexpr char kRegisterLink[] =
    "register the library of the link, or name another link with --link";

// Of files and identifiers: the case of their letters does not count.
bool sameName(std::string_view left, std::string_view right) {
    return std::ranges::equal(left, right, [](unsigned char one, unsigned char other) {
        return std::tolower(one) == std::tolower(other);
    });
}

std::string folderOf(const std::string& path) {
    return path.substr(0, path.rfind('\\'));
}

std::string unquoted(const std::string& path) {
    const bool isQuoted = path.size() >= 2 && path.front() == '"' && path.back() == '"';
    return isQuoted ? path.substr(1, path.size() - 2) : path;
}

// What the system finds: the user's values stand before the machine's.
std::optional<std::string> read(const RegistrationSource& source, const std::string& key,
                                const std::string& name = {}) {
    std::optional<std::string> value = source.user(key, name);
    return value ? value : source.machine(key, name);
}

std::string serverKey(const std::string& identifier) {
    return "CLSID\\" + identifier + "\\InprocServer32";
}

// The file of a class; nothing when it is not registered.
std::optional<std::string> serverOf(const RegistrationSource& source,
                                    const std::string& identifier) {
    const auto path = read(source, serverKey(identifier));
    return path && !path->empty() ? std::optional(unquoted(*path)) : std::nullopt;
}

Place placeOf(const RegistrationSource& source, const std::string& identifier) {
    const std::string key = serverKey(identifier);
    if (source.user(key, {})) return Place::kUser;
    return source.machine(key, {}) ? Place::kMachine : Place::kNowhere;
}

// How a value is to be compared. Versions of the system differ in the last two.
enum class Kind { kText, kPath, kKeyAlone, kFolderOrNothing, kNumber };

struct Expected {
    std::string key;
    std::string name;
    std::string value;
    Kind kind = Kind::kText;
};

bool fits(const Expected& expected, const std::string& found) {
    switch (expected.kind) {
        case Kind::kPath:
            return sameName(unquoted(found), expected.value);
        case Kind::kKeyAlone:
            return true;
        case Kind::kFolderOrNothing:
            return found.empty() || sameName(found, expected.value) ||
                   sameName(found, expected.value + "\\");
        case Kind::kNumber:
            return !found.empty() && std::ranges::all_of(found, [](unsigned char character) {
                return std::isdigit(character) != 0;
            });
        default:
            return found == expected.value ||
                   (expected.value.starts_with('{') && sameName(found, expected.value));
    }
}

std::string wordsOf(const Expected& expected) {
    return expected.name.empty() ? expected.key : expected.key + " : " + expected.name;
}

class LibraryCheck {
public:
    LibraryCheck(const RegisteredLibrary& library, const RegistrationSource& source)
        : library_(library), source_(source) {}

    RegistrationReport run() && {
        if (!checkManifest()) checkRegistry();
        return std::move(report_);
    }

private:
    // False when no manifest makes the classes known.
    bool checkManifest() {
        std::vector<std::string> unknown;
        for (const RegisteredClass& one : library_.classes) {
            const auto manifest = source_.manifest(one.identifier);
            if (manifest) report_.manifest = *manifest;
            if (!manifest) unknown.push_back(one.name);
        }
        if (unknown.size() == library_.classes.size()) return false;
        report_.place = Place::kManifest;
        report_.file = folderOf(report_.manifest) + "\\" + library_.file;
        report_.contents = counted(library_.classes.size() - unknown.size(), "class", "classes");
        for (const std::string& name : unknown)
            report_.addFault(report_.manifest + " does not name " + name, kSameVersion);
        checkFile(report_.file);
        return true;
    }

    void checkRegistry() {
        std::map<std::string, std::size_t> files;
        for (const RegisteredClass& one : library_.classes)
            if (const auto path = serverOf(source_, one.identifier)) ++files[*path];
        if (files.empty())
            return report_.addFault("not one of its classes is registered", kRegister);

        report_.file = std::ranges::max_element(files, {}, [](const auto& file) {
                           return file.second;
                       })->first;
        checkFile(report_.file);
        checkClasses();
        checkTypeLibrary();
        checkInterfaces();
        report_.contents = counted(classCount_, "class", "classes") + ", " +
                           counted(interfaceCount_, "interface", "interfaces") + ", type library " +
                           library_.version;
    }

    static std::string counted(std::size_t count, const char* one, const char* several) {
        return std::to_string(count) + " " + (count == 1 ? one : several);
    }

    void checkFile(const std::string& path) {
        report_.image = source_.file(path);
        if (!report_.image.isThere) return report_.addFault("there is no file " + path, kMoved);
        if (report_.image.bits != 32)
            report_.addFault(
                path + (report_.image.bits == 64 ? " is a 64-bit library" : " is no library"),
                kWrongFile);
    }

    void checkClasses() {
        for (const RegisteredClass& one : library_.classes) {
            const Place place = placeOf(source_, one.identifier);
            if (place != Place::kNowhere) ++classCount_;
            // The user's own one is what most programs get.
            if (place == Place::kUser || report_.place == Place::kNowhere) report_.place = place;
            checkValues(std::string(one.name), valuesOf(one));
            noteSecondFile(one);
        }
    }

    // The machine's file is another one than the user's.
    void noteSecondFile(const RegisteredClass& one) {
        const auto other = source_.machine(serverKey(one.identifier), {});
        if (!other || sameName(unquoted(*other), report_.file) ||
            placeOf(source_, one.identifier) != Place::kUser)
            return;
        const std::string text = "programs that run as an administrator use " + *other;
        if (std::ranges::find(report_.notes, text) == report_.notes.end())
            report_.notes.push_back(text);
    }

    std::vector<Expected> valuesOf(const RegisteredClass& one) const {
        const std::string program = one.program;
        const std::string version = program + ".1";
        const std::string key = std::string("CLSID\\") + one.identifier;
        std::vector<Expected> values = {
            {key, "", one.classTitle},
            {key + "\\InprocServer32", "", report_.file, Kind::kPath},
            {key + "\\InprocServer32", "ThreadingModel", "Apartment"},
            {key + "\\ProgID", "", version},
            {key + "\\VersionIndependentProgID", "", program},
            {key + "\\Programmable", "", "", Kind::kKeyAlone},
            {key + "\\TypeLib", "", library_.identifier},
            {version, "", one.title},
            {version + "\\CLSID", "", one.identifier},
            {program, "", one.title},
            {program + "\\CLSID", "", one.identifier},
            {program + "\\CurVer", "", version},
        };
        if (one.bitmap == 0) return values;
        const std::string bitmap = report_.file + ", " + std::to_string(one.bitmap);
        values.insert(values.end(), {{key + "\\Control", "", "", Kind::kKeyAlone},
                                     {key + "\\Insertable", "", "", Kind::kKeyAlone},
                                     {key + "\\ToolboxBitmap32", "", bitmap, Kind::kPath},
                                     {key + "\\MiscStatus", "", "0"},
                                     {key + "\\MiscStatus\\1", "", "131473"},
                                     {key + "\\Version", "", library_.version}});
        return values;
    }

    void checkTypeLibrary() {
        const std::string key =
            std::string("TypeLib\\") + library_.identifier + "\\" + library_.version;
        checkValues("type library",
                    {{key, "", library_.title},
                     {key + "\\409\\win32", "", report_.file, Kind::kPath},
                     {key + "\\FLAGS", "", "", Kind::kNumber},
                     {key + "\\HELPDIR", "", folderOf(report_.file), Kind::kFolderOrNothing}});
    }

    void checkInterfaces() {
        std::vector<const RegisteredInterface*> missing;
        std::size_t foreign = 0;
        for (const RegisteredInterface& one : library_.interfaces) {
            const std::string key = std::string("Interface\\") + one.identifier;
            if (!read(source_, key)) {
                missing.push_back(&one);
                continue;
            }
            ++interfaceCount_;
            std::vector<Expected> values = {{key, "", one.name}};
            const Expected marshaller{key + "\\ProxyStubClsid32", "", one.marshaller};
            const Expected library{key + "\\TypeLib", "", library_.identifier};
            const bool hasForeignMarshaller = isForeign(marshaller, "CLSID\\");
            const bool hasForeignLibrary = isForeign(library, "TypeLib\\");
            if (hasForeignMarshaller || hasForeignLibrary) ++foreign;
            if (!hasForeignMarshaller) values.push_back(marshaller);
            if (!hasForeignLibrary) {
                values.push_back(library);
                values.push_back({key + "\\TypeLib", "Version", library_.version});
            }
            checkValues(std::string("interface ") + one.name, values);
        }
        if (foreign > 0) {
            report_.notes.push_back(
                counted(foreign, "interface is", "interfaces are") +
                " registered by another library, which carries calls from thread to thread");
        }
        if (missing.size() > kFewInterfaces) {
            report_.addFault(counted(missing.size(), "interface", "interfaces") + " of " +
                                 std::to_string(library_.interfaces.size()) +
                                 " are not registered: calls from thread to thread fail",
                             kRegisterAgain);
            return;
        }
        for (const RegisteredInterface* one : missing) {
            report_.addFault(std::string("interface ") + one->name + ": Interface\\" +
                                 one->identifier + " is missing",
                             kRegisterAgain);
        }
    }

    // Another library has registered the same interface, which is its right.
    bool isForeign(const Expected& expected, const std::string& where) const {
        const auto found = read(source_, expected.key);
        return found && !found->empty() && !fits(expected, *found) && read(source_, where + *found);
    }

    // A key that is gone with all below it is one fault.
    void checkValues(const std::string& subject, const std::vector<Expected>& values) {
        std::string gone;
        for (const Expected& expected : values) {
            if (!gone.empty() && expected.key.starts_with(gone + "\\")) continue;
            if (!gone.empty() && expected.key == gone) continue;
            const auto found = read(source_, expected.key, expected.name);
            if (found && fits(expected, *found)) continue;
            if (!read(source_, expected.key)) gone = expected.key;
            report_.addFault(subject + ": " + wordsOf(expected) +
                                 (found ? " is '" + *found + "' instead of '" + expected.value + "'"
                                        : " is missing"),
                             kRegisterAgain);
        }
    }

    const RegisteredLibrary& library_;
    const RegistrationSource& source_;
    RegistrationReport report_;
    std::size_t classCount_ = 0;
    std::size_t interfaceCount_ = 0;
};

// A class of the link and its file.
void checkLinkClass(const std::string& name, const std::string& identifier,
                    const RegistrationSource& source, RegistrationReport& report) {
    const auto path = serverOf(source, identifier);
    if (!path) {
        report.addFault(name + ": " + serverKey(identifier) + " is missing", kRegisterLink);
        return;
    }
    const ImageFile image = source.file(*path);
    if (report.file.empty()) {
        report.file = *path;
        report.image = image;
        report.place = placeOf(source, identifier);
    } else if (sameName(*path, report.file)) {
        return;
    }
    if (!image.isThere)
        report.addFault(name + ": there is no file " + *path, kRegisterLink);
    else if (image.bits == 64)
        report.addFault(name + ": " + *path + " is a 64-bit library", kRegisterLink);
    else if (image.bits == 0)
        report.addFault(name + ": " + *path + " is no library", kRegisterLink);
}

}  // namespace

void RegistrationReport::addFault(const std::string& text, const std::string& remedy) {
    faults.push_back(text);
    if (std::ranges::find(remedies, remedy) == remedies.end()) remedies.push_back(remedy);
}

RegistrationReport checkLibrary(const RegisteredLibrary& library,
                                const RegistrationSource& source) {
    return LibraryCheck(library, source).run();
}

RegistrationReport checkLink(const std::string& program, std::span<const LinkPart> parts,
                             const RegistrationSource& source) {
    RegistrationReport report;
    const auto identifier = read(source, program + "\\CLSID");
    if (!identifier || identifier->empty()) {
        report.addFault(program + " is not registered", kRegisterLink);
        return report;
    }
    checkLinkClass(program, *identifier, source, report);
    for (const LinkPart& part : parts) {
        if (part.without && !serverOf(source, part.identifier)) {
            report.notes.push_back(std::string("it has no ") + part.name + ": no " + part.without);
            continue;
        }
        checkLinkClass(part.name, part.identifier, source, report);
        report.contents += (report.contents.empty() ? "" : ", ") + std::string(part.name);
    }
    return report;
}

}  // namespace kel::host
