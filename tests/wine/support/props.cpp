// The kinds of doubles besides the link and its ports.
#include "interfaces/link_classes.h"
#include "tests/wine/service/access_prop.h"
#include "tests/wine/service/fake_compass.h"
#include "tests/wine/service/fake_pressure.h"
#include "tests/wine/support/stage.h"

namespace kel::test {

const std::map<std::string_view, std::unique_ptr<Prop> (*)(Stage&)>& propMakers() {
    static const std::map<std::string_view, std::unique_ptr<Prop> (*)(Stage&)> makers = {
        {"compass", makeProp<AccessProp<FakeCompass, link::kCompassAccessClass>>},
        {"pressure", makeProp<AccessProp<FakePressure, link::kPressureAccessClass>>},
    };
    return makers;
}

}  // namespace kel::test
