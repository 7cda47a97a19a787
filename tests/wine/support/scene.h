#pragma once
// Scenes: tests of windows as texts, in the form of cases.h. Lines with ">" are the host's, those
// with "?" the user's; expected is what is told meanwhile, step by step: the calls of the doubles,
// what the host's calls give, what the user sees.
//
//     > make ConnectSerialDialog
//     > link ConnectionString COM2:
//     > port COM4 COM5 absent
//     > ShowModal 0
//     ? window Connect to serial port
//     ? forget
//     ? show SERIAL_COM1 SERIAL_COM2
//     SERIAL_COM1: Com1, free
//     SERIAL_COM2: Com2, selected
//     ? press SERIAL_COM1
//     ? wait SERIAL_COM1 Com1, selected
//     ? press CANCEL
//     new PortExists COM2
//     …
//     False
//
// The host's lines of a step run on one thread, its user's lines beside them on another; steps
// with user's lines only go on with the user of the step before. After each line that does
// something the user waits until the window has done all that it has to, and nobody ever waits
// for a time.
//
// The host, by lines in small letters, and by calls as in late_bound.h, which tell their result
// (nothing, or a text, or the code and reason of a failure):
//
//     make CLASS [alone]           a component, with the link where it takes one
//     release                      the last reference to it
//     link NAME VALUE              Port none|serial|network, ConnectionString, BaudRate,
//     EchoWindow,
//                                  IdleProcessing, RadioConnection, SDI12Mode, Reply
//     port COM1… free|absent|busy ERROR      of the streams that components make
//     password TEXT                network streams connect with it only
//     class serial|network double|bench|hasty|none     hasty: the bench's, which waits briefly
//     answer NAME true|false…      what a call that is named as in the transcript answers in turn
//     fail call NUMBER, fail METHOD          counted from now; get_Port, put_Port, Close
//     remember SECTION NAME = VALUE          in the store: a text, or dword:NUMBER
//     recall SECTION               tells what the store holds
//     file NAME, folder NAME       an empty one in $folder; $peer is a port with a listener,
//                                  $instrument the address of a virtual instrument, $vanishing of
//                                  one that is gone after a command
//     write NAME TEXT              a file with a text in $folder
//     same NAME FILE               checks that one in $folder is as a file of the project
//     owner gone                   $owner, a window to be given to ShowModal, is closed
//     hold CALL, go                the calls that begin so wait inside, running messages, until go
//     tell nothing|calls|fetches   what is told of the doubles; fetches: those of the port too
//     forget                       what this step has told so far
//     order FIRST | SECOND         checks that no call SECOND… came before any call FIRST…
//     | TEXT, script FILE          a line of a script, a script of the project
//     run, variables               runs the script, tells what scripts have set
//     every call fails             plays all again with the first call of the doubles failing, with
//                                  the second one, …: host's calls then succeed or tell that
//                                  failure, "order" holds, "recall" always tells the same, all ends
//
// In calls "$nothing" is an object that is not there. A first word of none of these is a further
// double's: see Prop in stage.h.
//
// The user, who names controls as resource_ids.h does, without "IDC_" or "IDM_", or OK, CANCEL,
// YES, NO, or by a number; TEXT is the text of a message box:
//
//     window CAPTION, gone         waits for the window, or until it is seen no more
//     press NAME                   a button that can be pressed
//     set NAME TEXT; type TEXT     the whole text; keys for what has the focus
//     key [Ctrl+|Shift+|Alt+]Tab|Enter|S|…   Tab waits until the focus has moved
//     choose NAME TEXT|ROW…        in a box of choices; rows of a list, an item of a tree
//     click|doubleclick|controlclick NAME ROW [box]
//     close, message NAME, timer   WM_CLOSE, a registered message, a tick of timer 1
//     command NAME                 the command of a control, be it disabled, or of a menu
//     wait NAME TEXT               until the control shows this; "*" stands for any text
//     told TEXT                    until this step tells something that begins so
//     focus NAME                   until it has the focus
//     show NAME…                   tells what they show: texts, [x] where checked, (disabled),
//                                  (hidden), rows with + or - for their boxes and * where selected
//     style NAME…, caption         tells classes and styles; what stands before the focus
//     columns NAME                 tells those of a list: title, alignment, width
//     look                         tells what dialog_faults.h finds
//     box CAPTION                  tells what a message box says and agrees
//     host LINE                    the host does this inside its message loop, under the open
//     window forget

#include <functional>
#include <iosfwd>
#include <string>
#include <vector>

#include "tests/support/cases.h"

namespace kel::test {

struct Scene {
    std::string name;  // of its picture, or its file and line
    std::string file;
    Case lines;
};

void PrintTo(const Scene& scene, std::ostream* stream);

// The scenes in a file, named relative to the project.
std::vector<Scene> readScenes(const std::string& file);

// The windows of the library, a scene for each.
std::vector<Scene> readOpenings();

// Plays it; all that is not as expected is a failure of the test. At "picture" another thread than
// that of the window looks at it.
void play(const Scene& scene, const std::function<void(HWND)>& look = {});

// The same on a platform that fails: the user leaves whatever window there is until all calls have
// come back, however they did.
void playOrNot(const Scene& scene);

}  // namespace kel::test
