#pragma once
// What the path of a firmware file tells, and the code that is typed to load it.

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace kel::service {

// By its extension.
bool isFirmwarePackage(std::wstring_view path);

// Where the second file stands, should there be one. Empty for what always comes alone: a package,
// and a file without an extension.
std::wstring firmwareCompanion(std::wstring_view path);

// The name without the folders.
std::wstring_view firmwareName(std::wstring_view path);

// 0 for an empty text; nothing where it is no whole number of 32 bits.
std::optional<std::int32_t> parseAccessCode(std::wstring_view text);

}  // namespace kel::service
