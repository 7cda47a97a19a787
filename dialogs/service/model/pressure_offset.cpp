#include "dialogs/service/model/pressure_offset.h"

#include "ui/model/formats.h"

namespace kel::service {

std::string shownPressure(double decibars, bool isMetric) {
    return ui::decimalText(isMetric ? decibars : decibars * ui::kPsiPerDecibar, 1);
}

std::string offsetCommand(double presentOffset, double mean) {
    return "pressoffset set " + ui::decimalText(presentOffset - mean, 3, 7);
}

}  // namespace kel::service
