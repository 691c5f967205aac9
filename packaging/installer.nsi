; The installer for 64-bit Windows: files, registration of the filter, PATH by choice, silent mode (/S, with /PATH and
; /D=folder), an entry among the installed programs. Uninstalling removes what was installed and nothing else.
; build_package.py hands over VERSION, OUTPUT, and in LISTS what is installed and removed.
Target amd64-unicode
!include "LogicLib.nsh"
!include "FileFunc.nsh"
!include "StrFunc.nsh"
!include "WinMessages.nsh"
!include "MUI2.nsh"
${StrStr}
${UnStrRep}

!define NAME "Quorlex Matroska Muxer"
!define UNINSTALL_KEY "Software\Microsoft\Windows\CurrentVersion\Uninstall\QuorlexMatroskaMuxer"
!define ENVIRONMENT_KEY "SYSTEM\CurrentControlSet\Control\Session Manager\Environment"
!define LONGEST_PATH 900 ; this program's texts have 1023 characters, and a PATH that is cut would be worse than none

Name "${NAME} ${VERSION}"
OutFile "${OUTPUT}"
InstallDir "$PROGRAMFILES64\${NAME}"
RequestExecutionLevel admin
SetCompressor /SOLID lzma
SetDateSave off
Unicode true
ShowInstDetails nevershow
ShowUninstDetails nevershow
VIProductVersion "${VERSION}.0"
VIAddVersionKey "ProductName" "${NAME}"
VIAddVersionKey "FileDescription" "${NAME} setup"
VIAddVersionKey "FileVersion" "${VERSION}"
VIAddVersionKey "LegalCopyright" "MIT License"

!insertmacro MUI_PAGE_WELCOME
!insertmacro MUI_PAGE_COMPONENTS
!insertmacro MUI_PAGE_DIRECTORY
!insertmacro MUI_PAGE_INSTFILES
!insertmacro MUI_PAGE_FINISH
!insertmacro MUI_UNPAGE_CONFIRM
!insertmacro MUI_UNPAGE_INSTFILES
!insertmacro MUI_LANGUAGE "English"

!macro Tell TEXT
  MessageBox MB_OK|MB_ICONEXCLAMATION "${TEXT}" /SD IDOK
!macroend

; A version that is there goes first, so that none of its files stays; its choice about PATH is kept.
Function RemoveEarlierVersion
  ReadRegStr $R0 HKLM "${UNINSTALL_KEY}" "InstallLocation"
  ${If} $R0 != ""
  ${AndIf} ${FileExists} "$R0\uninstall.exe"
    ExecWait '"$R0\uninstall.exe" /S _?=$R0' $R1
    ${If} $R1 != 0
      !insertmacro Tell "The version that is installed could not be removed. Close the programs that use it and try again."
      SetErrorLevel 3
      Abort
    ${EndIf}
    Delete "$R0\uninstall.exe"
    RMDir "$R0"
  ${EndIf}
FunctionEnd

Section "Module, tool and documents"
  SectionIn RO
  Call RemoveEarlierVersion
  !include "${LISTS}/install.nsh"
  SetOutPath "$INSTDIR"
  ExecWait '"$SYSDIR\regsvr32.exe" /s "$INSTDIR\bin\QRX_MKVMuxer.ax"' $R0
  ${If} $R0 != 0
    !insertmacro Tell "QRX_MKVMuxer.ax could not be registered. Run register.cmd in $INSTDIR as an administrator."
    SetErrorLevel 4
  ${EndIf}
  WriteUninstaller "$INSTDIR\uninstall.exe"
  WriteRegStr HKLM "${UNINSTALL_KEY}" "DisplayName" "${NAME}"
  WriteRegStr HKLM "${UNINSTALL_KEY}" "DisplayVersion" "${VERSION}"
  WriteRegStr HKLM "${UNINSTALL_KEY}" "InstallLocation" "$INSTDIR"
  WriteRegStr HKLM "${UNINSTALL_KEY}" "UninstallString" '"$INSTDIR\uninstall.exe"'
  WriteRegStr HKLM "${UNINSTALL_KEY}" "QuietUninstallString" '"$INSTDIR\uninstall.exe" /S'
  WriteRegDWORD HKLM "${UNINSTALL_KEY}" "NoModify" 1
  WriteRegDWORD HKLM "${UNINSTALL_KEY}" "NoRepair" 1
SectionEnd

Section /o "mkvmux in every command line (PATH)" SectionPath
  ClearErrors
  ReadRegStr $R0 HKLM "${ENVIRONMENT_KEY}" "Path"
  StrLen $R1 $R0
  ${If} ${Errors}
  ${OrIf} $R1 > ${LONGEST_PATH}
    !insertmacro Tell "PATH is too long to be changed safely. Add $INSTDIR\bin to it in the system's settings."
  ${Else}
    ${StrStr} $R2 ";$R0;" ";$INSTDIR\bin;"
    ${If} $R2 == ""
      WriteRegExpandStr HKLM "${ENVIRONMENT_KEY}" "Path" "$R0;$INSTDIR\bin"
      SendMessage ${HWND_BROADCAST} ${WM_SETTINGCHANGE} 0 "STR:Environment" /TIMEOUT=5000
    ${EndIf}
    WriteRegDWORD HKLM "${UNINSTALL_KEY}" "InPath" 1
  ${EndIf}
SectionEnd

Function .onInit
  SetRegView 64
  ReadRegDWORD $R0 HKLM "${UNINSTALL_KEY}" "InPath"
  ${GetParameters} $R1
  ClearErrors
  ${GetOptions} $R1 "/PATH" $R2
  ${IfNot} ${Errors}
    StrCpy $R0 1
  ${EndIf}
  ${If} $R0 == 1
    SectionSetFlags ${SectionPath} 1
  ${EndIf}
FunctionEnd

Function un.onInit
  SetRegView 64
FunctionEnd

Section "Uninstall"
  ExecWait '"$SYSDIR\regsvr32.exe" /s /u "$INSTDIR\bin\QRX_MKVMuxer.ax"'
  ReadRegDWORD $R0 HKLM "${UNINSTALL_KEY}" "InPath"
  ${If} $R0 == 1
    ClearErrors
    ReadRegStr $R0 HKLM "${ENVIRONMENT_KEY}" "Path"
    StrLen $R1 $R0
    ${IfNot} ${Errors}
    ${AndIf} $R1 < 1000
      ${UnStrRep} $R2 $R0 ";$INSTDIR\bin" ""
      WriteRegExpandStr HKLM "${ENVIRONMENT_KEY}" "Path" "$R2"
      SendMessage ${HWND_BROADCAST} ${WM_SETTINGCHANGE} 0 "STR:Environment" /TIMEOUT=5000
    ${EndIf}
  ${EndIf}
  !include "${LISTS}/remove.nsh"
  Delete "$INSTDIR\uninstall.exe"
  RMDir "$INSTDIR"
  DeleteRegKey HKLM "${UNINSTALL_KEY}"
SectionEnd
