#pragma once
// Writing JSON.

#include <string>
#include <string_view>

namespace kel::kelrun {

// The text (UTF-8) as a JSON string, quotes included. The result holds no control characters.
std::string jsonString(std::string_view text);

// An object on one line, its members in the order in which they are added.
class JsonObject {
public:
    JsonObject& add(std::string_view name, std::string_view text);
    JsonObject& add(std::string_view name, long long number);

    std::string text() const { return members_ + "}"; }

private:
    void addRaw(std::string_view name, std::string_view value);

    std::string members_ = "{";
};

}  // namespace kel::kelrun
