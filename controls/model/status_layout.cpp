#include "controls/model/status_layout.h"

namespace kel::controls {

StatusLayout layOut(const StatusDesign& design, bool showsBar, bool showsCancel) {
    StatusLayout layout{design.windowHeight, design.cancel.top};
    if (!showsBar) {
        const int room = design.cancel.top - design.bar.top;
        layout.cancelTop -= room;
        layout.windowHeight -= room;
    }
    if (!showsCancel) layout.windowHeight -= design.cancel.height();
    return layout;
}

}  // namespace kel::controls
