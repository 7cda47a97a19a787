; The set-up program: installs for one user and registers, removes an earlier version first.
; Given by tools/package.sh: VERSION, OUTPUT, and LISTS, a file with macros for the installed files.
;
; Exit codes: 0 done, 1 cancelled by the user, 2 failed, 3 a file is in use (nothing was changed).

Unicode true
SetCompressor /SOLID lzma
RequestExecutionLevel user
ManifestDPIAware true

!include "LogicLib.nsh"
!include "MUI2.nsh"
!include "${LISTS}"

!define UNINSTALL_KEY "Software\Microsoft\Windows\CurrentVersion\Uninstall\KelUtils"

Name "KelUtils ${VERSION}"
BrandingText "KelUtils ${VERSION}"
OutFile "${OUTPUT}"
InstallDir "$LOCALAPPDATA\Programs\KelUtils"
InstallDirRegKey HKCU "${UNINSTALL_KEY}" "InstallLocation"
ShowInstDetails show
ShowUninstDetails show

VIProductVersion "${VERSION}.0"
VIAddVersionKey "ProductName" "KelUtils"
VIAddVersionKey "ProductVersion" "${VERSION}"
VIAddVersionKey "FileDescription" "Set-up program of KelUtils"
VIAddVersionKey "FileVersion" "${VERSION}"
VIAddVersionKey "CompanyName" "The KelUtils authors"
VIAddVersionKey "LegalCopyright" "MIT licence"

!insertmacro MUI_PAGE_DIRECTORY
!insertmacro MUI_PAGE_INSTFILES
!insertmacro MUI_UNPAGE_CONFIRM
!insertmacro MUI_UNPAGE_INSTFILES
!insertmacro MUI_LANGUAGE "English"

Var Problem

; What both programs do: set-up, and uninstaller with the prefix "un.".
!macro SharedFunctions PREFIX

; Ends with the exit code on the stack, and tells $Problem: in the window, or on the output of whoever
; started a silent set-up.
Function ${PREFIX}GiveUp
    Pop $0
    SetErrorLevel $0
    DetailPrint "$Problem"
    ${If} ${Silent}
        System::Call 'kernel32::GetStdHandle(i -11) p .r1'
        ${If} $1 P= 0
            System::Call 'kernel32::AttachConsole(i -1)'
            System::Call 'kernel32::GetStdHandle(i -11) p .r1'
        ${EndIf}
        FileWrite $1 "KelUtils set-up: $Problem$\r$\n"
        Quit
    ${EndIf}
    Abort "$Problem"
FunctionEnd

; Waits until no file in the folder on the stack is in use, or the user has enough of it. A library
; that is loaded and a program that runs cannot be opened for writing.
Function ${PREFIX}WaitUntilFree
    Pop $R0
    ${Do}
        StrCpy $Problem ""
        !insertmacro EachProgram LookWhetherFree
        ${If} $Problem == ""
            Return
        ${EndIf}
        MessageBox MB_RETRYCANCEL|MB_ICONEXCLAMATION "$Problem" /SD IDCANCEL IDRETRY +3
        Push 3
        Call ${PREFIX}GiveUp
    ${Loop}
FunctionEnd

!macroend

!macro LookWhetherFree FILE
    ${If} ${FileExists} "$R0\${FILE}"
        ClearErrors
        FileOpen $1 "$R0\${FILE}" a
        ${If} ${Errors}
            StrCpy $Problem "$R0\${FILE} is in use, or cannot be written. Close the programs that use KelUtils. Nothing was changed."
        ${Else}
            FileClose $1
        ${EndIf}
    ${EndIf}
!macroend

!insertmacro SharedFunctions ""
!insertmacro SharedFunctions "un."

; What an earlier set-up installed goes, wherever it is: a newer version may lack some of its files.
Function RemoveEarlierVersion
    ReadRegStr $2 HKCU "${UNINSTALL_KEY}" "InstallLocation"
    ${If} $2 == ""
    ${OrIfNot} ${FileExists} "$2\uninstall.exe"
        Return
    ${EndIf}
    Push $2
    Call WaitUntilFree
    DetailPrint "Removing the version in $2"
    ; With its folder named, the uninstaller runs in place, and ends when it is done.
    ExecWait '"$2\uninstall.exe" /S _?=$2' $3
    ${If} $3 != 0
        StrCpy $Problem "The earlier version in $2 could not be removed (exit code $3)."
        Push 2
        Call GiveUp
    ${EndIf}
    Delete "$2\uninstall.exe"
    RMDir "$2"
FunctionEnd

Section
    Call RemoveEarlierVersion
    Push $INSTDIR
    Call WaitUntilFree

    ClearErrors
    !insertmacro InstallFiles
    WriteUninstaller "$INSTDIR\uninstall.exe"
    ${If} ${Errors}
        StrCpy $Problem "Not all files could be written to $INSTDIR."
        Push 2
        Call GiveUp
    ${EndIf}
    WriteRegStr HKCU "${UNINSTALL_KEY}" "DisplayName" "KelUtils"
    WriteRegStr HKCU "${UNINSTALL_KEY}" "DisplayVersion" "${VERSION}"
    WriteRegStr HKCU "${UNINSTALL_KEY}" "Publisher" "The KelUtils authors"
    WriteRegStr HKCU "${UNINSTALL_KEY}" "InstallLocation" "$INSTDIR"
    WriteRegStr HKCU "${UNINSTALL_KEY}" "UninstallString" '"$INSTDIR\uninstall.exe"'
    WriteRegStr HKCU "${UNINSTALL_KEY}" "QuietUninstallString" '"$INSTDIR\uninstall.exe" /S'
    WriteRegDWORD HKCU "${UNINSTALL_KEY}" "NoModify" 1
    WriteRegDWORD HKCU "${UNINSTALL_KEY}" "NoRepair" 1
    CreateShortcut "$SMPROGRAMS\KelDesk.lnk" "$INSTDIR\keldesk.exe"

    ; Last, so that a failure leaves an uninstaller.
    nsExec::ExecToStack '"$INSTDIR\kelregister.exe"'
    Pop $2
    Pop $3
    DetailPrint "$3"
    ${If} $2 != 0
        StrCpy $Problem "The components could not be registered: $3"
        Push 2
        Call GiveUp
    ${EndIf}
SectionEnd

Section "Uninstall"
    Push $INSTDIR
    Call un.WaitUntilFree
    nsExec::ExecToStack '"$INSTDIR\kelregister.exe" --unregister'
    Pop $2
    Pop $3
    DetailPrint "$3"
    ${If} $2 != 0
        StrCpy $Problem "The components are still registered, and all files still there: $3"
        Push 2
        Call un.GiveUp
    ${EndIf}
    Delete "$SMPROGRAMS\KelDesk.lnk"
    DeleteRegKey HKCU "${UNINSTALL_KEY}"
    ; These files and no others: the folder may hold the user's own.
    !insertmacro RemoveFiles
    Delete "$INSTDIR\uninstall.exe"
    RMDir "$INSTDIR"
SectionEnd
