// The kinds of doubles besides the link and its ports.
#include "tests/wine/support/stage.h"

namespace kel::test {

const std::map<std::string_view, std::unique_ptr<Prop> (*)(Stage&)>& propMakers() {
    static const std::map<std::string_view, std::unique_ptr<Prop> (*)(Stage&)> makers;
    return makers;
}

}  // namespace kel::test
