#pragma once
// The desktop host as a program of its own, in scenes. The user's windows are its own then.
//
//     program start ARGUMENTS
//     program status TEXT          waits until the second part of its status bar begins so
//     program copied TEXT          waits until the clipboard holds this
//     program runs                 it has not ended
//     program ends 0               waits until it has, with this code

#include "tests/wine/support/stage.h"

namespace kel::test {

std::unique_ptr<Prop> makeProgramProp(Stage& stage);

}  // namespace kel::test
