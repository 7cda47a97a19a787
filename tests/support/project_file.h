#pragma once
// Files that tests read, found wherever the project and its build folder have been moved to.

#include <filesystem>
#include <fstream>
#include <stdexcept>
#include <string>

#ifdef _WIN32
#include <windows.h>
#endif

namespace kel::test {

inline std::filesystem::path thisProgram() {
#ifdef _WIN32
    wchar_t path[1024];
    return std::filesystem::path(path, path + GetModuleFileNameW(nullptr, path, std::size(path)));
#else
    return std::filesystem::read_symlink("/proc/self/exe");
#endif
}

// The file or folder of this name in the nearest folder above this program that has it.
inline std::filesystem::path findAbove(const std::filesystem::path& name) {
    const std::filesystem::path program = thisProgram();
    for (auto folder = program.parent_path(); folder.has_relative_path();
         folder = folder.parent_path()) {
        if (exists(folder / name)) return (folder / name).make_preferred();
    }
    throw std::runtime_error("There is no " + name.string() + " in a folder above " +
                             program.string());
}

// Whether the self-test takes the file along: all below "tests", and what the list there names.
inline bool isPacked(const std::string& name) {
    if (name.starts_with("tests/")) return true;
    std::ifstream list(findAbove("tests/support/read_files.txt"));
    for (std::string line; std::getline(list, line);)
        if (name == line || name.starts_with(line + "/")) return true;
    return false;
}

// A file or folder that a test reads: names are relative to the project's folder, or to the build
// folder. Throws where there is none, and for one that the self-test would not find.
inline std::filesystem::path projectFile(const std::filesystem::path& name) {
    if (!isPacked(name.generic_string()))
        throw std::runtime_error("tests/support/read_files.txt does not name " + name.string());
    return findAbove(name);
}

}  // namespace kel::test
