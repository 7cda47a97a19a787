#pragma once
// What dialogs use of the platform's ATL.DLL: templates that may host controls.

#include <windows.h>

extern "C" {
BOOL WINAPI AtlAxWinInit();
INT_PTR WINAPI AtlAxDialogBoxA(HINSTANCE instance, LPCSTR resource, HWND owner, DLGPROC procedure,
                               LPARAM parameter);
HWND WINAPI AtlAxCreateDialogA(HINSTANCE instance, LPCSTR resource, HWND owner, DLGPROC procedure,
                               LPARAM parameter);
}
