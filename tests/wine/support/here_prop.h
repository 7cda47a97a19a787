#pragma once
// Windows of the host's thread as that sees them, without a message loop, in scenes.
//
//     here window CAPTION / …      the one that the following lines are about, inside others
//     here show NAME…              tells what they show, or that they are gone; WINDOW is the
//                                  window itself, NAME/edit the field of a box of choices
//     here painted NAME…           tells whether nothing of them waits to be painted
//     here narrow NAME TEXT        adds the text as a program without Unicode does
//     here setfocus NAME
//     here focus NAME              tells whether it has the focus, or a part of it
//     here end NAME                tells whether it is scrolled to the end
//     here send NAME MESSAGE [WIDE [LONG | "TEXT"]]     by the platform's name for the message,
//                                  which messages.txt has to know
//     here ask NAME MESSAGE …      the same, and tells what it gives
//     here post NAME MESSAGE …
//     here colours NAME MESSAGE    tells what the window answers to that message of a control:
//                                  text on background, brush
//     here events LINE             tells the events of a status dialog, and does this in the next
//     one

#include "tests/wine/support/stage.h"

namespace kel::test {

std::unique_ptr<Prop> makeHereProp(Stage& stage);

}  // namespace kel::test
