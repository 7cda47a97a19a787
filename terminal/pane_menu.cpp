#include "terminal/pane_menu.h"

#include "com/error.h"
#include "com/unique_handle.h"

namespace kel::terminal {
namespace {

struct MenuTraits {
    using Type = HMENU;
    static Type none() { return nullptr; }
    static void close(Type menu) { DestroyMenu(menu); }
};

}  // namespace

PaneCommand askPaneMenu(HWND owner, POINT place, bool hasSelection, bool hasText) {
    const com::UniqueHandle<MenuTraits> menu(CreatePopupMenu());
    const struct {
        PaneCommand command;
        const wchar_t* text;
        bool isEnabled;
    } entries[] = {{PaneCommand::Copy, L"&Copy\tCtrl+C", hasSelection},
                   {PaneCommand::SelectAll, L"Select &all", hasText},
                   {PaneCommand::Clear, L"C&lear", hasText}};
    for (const auto& entry : entries) {
        AppendMenuW(menu.get(), MF_STRING | (entry.isEnabled ? MF_ENABLED : MF_GRAYED),
                    static_cast<UINT_PTR>(entry.command), entry.text);
    }
    return static_cast<PaneCommand>(TrackPopupMenu(menu.get(), TPM_RETURNCMD | TPM_RIGHTBUTTON,
                                                   place.x, place.y, 0, owner, nullptr));
}

}  // namespace kel::terminal
