#include "ole/model/property_bytes.h"
#include "tests/fuzz/target.h"

namespace kel::fuzz {

void restoreAnything(std::string_view input) {
    const auto size = ole::sizeAfterHeader(input.substr(0, ole::kPropertyHeaderSize));
    require(!size || *size <= ole::kLargestPropertyData, "a header announces no more than allowed");
    // Without a header the input stands for what is behind one.
    const auto properties =
        ole::propertiesIn(size ? input.substr(ole::kPropertyHeaderSize) : input);
    if (!properties) return;
    for (const ole::StoredProperty& property : *properties) {
        const auto* font = std::get_if<ole::StoredFont>(&property.value);
        require(!font || (!font->name.empty() && font->name.size() < 32 && font->size > 0 &&
                          font->size <= 16'380'000),
                "a font is one that a control can have");
    }
    const std::string written = ole::propertyBytes(*properties);
    require(written.size() <= input.size() + ole::kPropertyHeaderSize,
            "what was read needs no more room than before");
    const std::string_view bytes = written;
    if (written.size() <= ole::kLargestPropertyData) {
        require(ole::sizeAfterHeader(bytes.substr(0, ole::kPropertyHeaderSize)) ==
                    written.size() - ole::kPropertyHeaderSize,
                "a header tells what follows");
    }
    require(ole::propertiesIn(bytes.substr(ole::kPropertyHeaderSize)) == properties,
            "what is written is read");
}

}  // namespace kel::fuzz
