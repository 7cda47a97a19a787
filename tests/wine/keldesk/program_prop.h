#pragma once
// The desktop host as a program of its own, in scenes. The user's windows are its own then.
//
//     program in FOLDER            its current folder
//     program start ARGUMENTS
//     program status TEXT          waits until the second part of its status bar begins so
//     program says TEXT            the same of the third part
//     program found NUMBER         waits until its list of errors and warnings has as many rows
//     program recent TEXT          waits until this is the script that it offers first
//     program copied TEXT          waits until the clipboard holds this
//     program asks                 waits for a question to be answered with yes or no
//     program runs                 it has not ended
//     program logs off             its user does, and the system asks and tells it
//     program ends 0               waits until it has, with this code

#include "tests/wine/support/stage.h"

namespace kel::test {

std::unique_ptr<Prop> makeProgramProp(Stage& stage);

}  // namespace kel::test
