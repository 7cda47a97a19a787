#pragma once
// A container around the component of a scene, which has to be a control.
//
//     container activate [ui|hide|primary]      gives it its site, and a window in "Container"
//     container deactivate, uideactivate, close, leave
//     container end                deactivates what is active, should nothing else hold it
//     container drop               closes it and lets the last reference go
//     container place 0 0 300 200 [100 0 600 100]     and what of that is seen
//     container ambient BackColor|UserMode|UIDead VALUE
//     container watch, unwatch     its properties and its view
//     container quick              the same by quick activation, and tells its status
//     container freeze             events
//     container tell               from now on what the control calls
//     container refuse CALL        is answered S_FALSE from now on
//     container during CALL | LINE      the next call that begins so, of the control or on the
//                                  link, does this first, one after the other;
//                                  "fail": is answered E_FAIL
//     container loop dialog|frame  how its message loop goes: asks the window for dialog keys, or
//                                  the active object for accelerators
//     container link own|other|none     the communicator, another double, or none
//     container received TEXT      is in the stream
//     container feed TEXT          is shown as streams do; feeds FIRST LAST TEXT…  lines of it
//     container tick               of the poll
//     container script LINE        runs on the link
//     container settings           tells what persists
//     container font CALL          of its font
//     container save|load bag|stream|storage, bag NAME = VALUE
//     container damage             loads every beginning of the stream, tells those that are taken

#include "tests/wine/support/stage.h"

namespace kel::test {

std::unique_ptr<Prop> makeContainerProp(Stage& stage);

}  // namespace kel::test
