#include "bench/link/registration.h"

#include <optional>
#include <string>

#include "bench/link/registry_key.h"
#include "com/error.h"
#include "com/module.h"
#include "com/text.h"

namespace kel::bench {
namespace {

// The names under which a class is registered.
struct Names {
    explicit Names(const com::ClassRow& row) {
        identifier = com::guidText(*row.identifier);
        classKey = L"CLSID\\" + identifier;
        independentProgram = std::wstring(L"BenchLink.") + row.name;
        program = independentProgram + L".1";
        description = std::wstring(row.name) + L" of the bench's instrument link";
    }

    std::wstring identifier;
    std::wstring classKey;
    std::wstring independentProgram;
    std::wstring program;
    std::wstring description;
};

std::wstring withoutQuotes(std::wstring path) {
    if (path.size() >= 2 && path.front() == L'"' && path.back() == L'"') {
        path = path.substr(1, path.size() - 2);
    }
    return path;
}

// The file that serves a class now; nothing when none does.
std::optional<std::wstring> serverOf(const Names& names) {
    for (const wchar_t* kind : {L"\\InprocServer32", L"\\LocalServer32"}) {
        const auto path = RegistryKey::read(names.classKey + kind);
        if (path && !path->empty()) return withoutQuotes(*path);
    }
    return std::nullopt;
}

std::wstring fileName(const std::wstring& path) {
    return path.substr(path.find_last_of(L"\\/") + 1);
}

bool isForeign(const std::wstring& server) {
    return !com::sameName(fileName(server), fileName(com::modulePath()));
}

void writeClass(const Names& names) {
    RegistryKey classKey = RegistryKey::create(names.classKey);
    classKey.set(nullptr, names.description);
    RegistryKey::create(names.classKey + L"\\ProgID").set(nullptr, names.program);
    RegistryKey::create(names.classKey + L"\\VersionIndependentProgID")
        .set(nullptr, names.independentProgram);
    RegistryKey server = RegistryKey::create(names.classKey + L"\\InprocServer32");
    server.set(nullptr, com::modulePath());
    server.set(L"ThreadingModel", L"Apartment");
}

void writeProgram(const Names& names, const std::wstring& program) {
    RegistryKey::create(program).set(nullptr, names.description);
    RegistryKey::create(program + L"\\CLSID").set(nullptr, names.identifier);
}

}  // namespace

void registerClasses(std::span<const com::ClassRow> table) {
    for (const com::ClassRow& row : table) {
        const Names names(row);
        const auto server = serverOf(names);
        if (server && isForeign(*server)) continue;
        writeClass(names);
        writeProgram(names, names.program);
        writeProgram(names, names.independentProgram);
        RegistryKey::create(names.independentProgram + L"\\CurVer").set(nullptr, names.program);
    }
}

void unregisterClasses(std::span<const com::ClassRow> table) {
    for (const com::ClassRow& row : table) {
        const Names names(row);
        const auto server = serverOf(names);
        if (!server || !com::sameName(*server, com::modulePath())) continue;
        RegistryKey::remove(names.program);
        RegistryKey::remove(names.independentProgram);
        RegistryKey::remove(names.classKey);
    }
}

}  // namespace kel::bench
