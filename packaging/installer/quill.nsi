; The installer. packaging/package calls the compiler with VERSION, STAGE (the folder with all files),
; FILES (the list of them as an include file), SIZE (KiB), OUTPUT, and SIGN where files are signed.
;
;   setup.exe [/S] [/AllUsers | /CurrentUser] [/D=C:\folder]
;
; Exit codes: 0 installed, 1 cancelled, 2 files could not be written, 740 /AllUsers without rights,
; 1638 a newer version is installed, else what registering the server returned.

Unicode true
SetCompressor /SOLID zlib
!include LogicLib.nsh
!include FileFunc.nsh
!include WordFunc.nsh
!include MUI2.nsh

!define UNINSTALL "Software\Microsoft\Windows\CurrentVersion\Uninstall\quill"
!define PUBLISHER "OBRA"

Name "quill ${VERSION}"
OutFile "${OUTPUT}"
RequestExecutionLevel highest
ManifestSupportedOS all
ManifestDPIAware true
AllowSkipFiles off
BrandingText " "
ShowInstDetails nevershow
ShowUninstDetails nevershow
VIProductVersion "${VERSION}.0"
VIAddVersionKey "CompanyName" "${PUBLISHER}"
VIAddVersionKey "ProductName" "QUILL"
VIAddVersionKey "FileDescription" "QUILL script helper, installer"
VIAddVersionKey "FileVersion" "${VERSION}.0"
VIAddVersionKey "ProductVersion" "${VERSION}.0"
VIAddVersionKey "LegalCopyright" "Copyright (c) 2026 ${PUBLISHER}"
!ifdef SIGN
  !uninstfinalize '${SIGN} "%1"'
!endif

!define MUI_ICON "..\..\src\core\quill.ico"
!define MUI_UNICON "..\..\src\core\quill.ico"
!define MUI_ABORTWARNING
!insertmacro MUI_PAGE_DIRECTORY
!insertmacro MUI_PAGE_INSTFILES
!define MUI_FINISHPAGE_TITLE "quill ${VERSION} is installed"
!define MUI_FINISHPAGE_TEXT "Scripts can use it now. The start menu has the help and examples."
!define MUI_FINISHPAGE_RUN "$INSTDIR\quill.chm"
!define MUI_FINISHPAGE_RUN_TEXT "Open the help"
!define MUI_FINISHPAGE_RUN_FUNCTION OpenHelp
!insertmacro MUI_PAGE_FINISH
!insertmacro MUI_UNPAGE_CONFIRM
!insertmacro MUI_UNPAGE_INSTFILES
!insertmacro MUI_LANGUAGE "English"

Var scope    ; AllUsers or CurrentUser
Var previous ; folder of the version that is installed already, or empty

; Says why not, and ends with this code.
!macro REFUSE CODE TEXT
  MessageBox MB_OK|MB_ICONSTOP "${TEXT}" /SD IDOK
  SetErrorLevel ${CODE}
  Quit
!macroend

; Where SHCTX and the start menu are.
!macro USE_SCOPE
  ${If} $scope == AllUsers
    SetShellVarContext all
  ${Else}
    SetShellVarContext current
  ${EndIf}
!macroend

Function .onInit
  UserInfo::GetAccountType
  Pop $0
  StrCpy $scope CurrentUser
  ${If} $0 == Admin
    StrCpy $scope AllUsers
  ${EndIf}
  ${GetParameters} $1
  ClearErrors
  ${GetOptions} $1 "/CurrentUser" $2
  ${IfNot} ${Errors}
    StrCpy $scope CurrentUser
  ${EndIf}
  ClearErrors
  ${GetOptions} $1 "/AllUsers" $2
  ${IfNot} ${Errors}
    ${If} $0 != Admin
      !insertmacro REFUSE 740 "Administrator rights are needed to install quill for all users."
    ${EndIf}
    StrCpy $scope AllUsers
  ${EndIf}
  !insertmacro USE_SCOPE

  ReadRegStr $1 SHCTX "${UNINSTALL}" DisplayVersion
  ${If} $1 != ""
    ${VersionCompare} "$1" "${VERSION}" $2
    ${If} $2 == 1
      !insertmacro REFUSE 1638 "quill $1 is installed, which is newer than ${VERSION}. Uninstall it first."
    ${EndIf}
  ${EndIf}

  ; /D= has set the folder already; else an upgrade stays where it is.
  ReadRegStr $previous SHCTX "${UNINSTALL}" InstallLocation
  ${If} $INSTDIR == ""
    StrCpy $INSTDIR $previous
  ${EndIf}
  ${If} $INSTDIR == ""
    ${If} $scope == AllUsers
      StrCpy $INSTDIR "$PROGRAMFILES32\quill"
    ${Else}
      StrCpy $INSTDIR "$LOCALAPPDATA\Programs\quill"
    ${EndIf}
  ${EndIf}
FunctionEnd

Function OpenHelp
  ExecShell open "$INSTDIR\quill.chm"
FunctionEnd

; A file that is in use (the server lives for five seconds after its last object, or as long as a
; script holds one) cannot be written, but renamed. It goes when nobody needs it any more: at the next
; installation, or at the next start of Windows. $0: the file.
!macro MOVE_ASIDE PREFIX
Function ${PREFIX}MoveAside
  StrCpy $1 1
  ${While} ${FileExists} "$0.$1.old"
    IntOp $1 $1 + 1
  ${EndWhile}
  ClearErrors
  Rename "$0" "$0.$1.old"
  ${IfNot} ${Errors}
    Delete /REBOOTOK "$0.$1.old"
  ${EndIf}
FunctionEnd
!macroend
!insertmacro MOVE_ASIDE ""
!insertmacro MOVE_ASIDE "un."

; Makes room for a file. $0: the file.
Function MakeRoom
  Delete "$0.*.old"
  ClearErrors
  Delete "$0"
  ${If} ${Errors}
    Call MoveAside
  ${EndIf}
FunctionEnd

; FILES calls these for each folder and file, by paths below STAGE.
!macro FOLDER PATH
  SetOutPath "$INSTDIR${PATH}"
!macroend
!macro FILE PATH
  StrCpy $0 "$INSTDIR${PATH}"
  Call MakeRoom
  File "${STAGE}${PATH}"
!macroend
!define INSTALL_FILES

Section
  ; An installation elsewhere is moved here.
  ${If} $previous != ""
  ${AndIf} $previous != $INSTDIR
  ${AndIf} ${FileExists} "$previous\uninstall.exe"
    ExecWait '"$previous\uninstall.exe" /S _?=$previous'
    Delete "$previous\uninstall.exe"
    RMDir "$previous"
  ${EndIf}

  !include "${FILES}"
  SetOutPath "$INSTDIR"
  StrCpy $0 "$INSTDIR\uninstall.exe"
  Call MakeRoom
  WriteUninstaller "$INSTDIR\uninstall.exe"

  WriteRegStr SHCTX "${UNINSTALL}" DisplayName "quill"
  WriteRegStr SHCTX "${UNINSTALL}" DisplayVersion "${VERSION}"
  WriteRegStr SHCTX "${UNINSTALL}" Publisher "${PUBLISHER}"
  WriteRegStr SHCTX "${UNINSTALL}" DisplayIcon "$INSTDIR\quill.exe"
  WriteRegStr SHCTX "${UNINSTALL}" InstallLocation "$INSTDIR"
  WriteRegStr SHCTX "${UNINSTALL}" UninstallString '"$INSTDIR\uninstall.exe"'
  WriteRegStr SHCTX "${UNINSTALL}" QuietUninstallString '"$INSTDIR\uninstall.exe" /S'
  WriteRegDWORD SHCTX "${UNINSTALL}" EstimatedSize ${SIZE}
  WriteRegDWORD SHCTX "${UNINSTALL}" NoModify 1
  WriteRegDWORD SHCTX "${UNINSTALL}" NoRepair 1

  CreateDirectory "$SMPROGRAMS\quill"
  CreateShortCut "$SMPROGRAMS\quill\quill help.lnk" "$INSTDIR\quill.chm"
  CreateShortCut "$SMPROGRAMS\quill\quill examples.lnk" "$INSTDIR\examples"

  ${If} $scope == AllUsers
    ExecWait '"$INSTDIR\quill.exe" /regserver' $0
  ${Else}
    ExecWait '"$INSTDIR\quill.exe" /regserverperuser' $0
  ${EndIf}
  ${If} $0 != 0
    !insertmacro REFUSE $0 "The server could not be registered (error $0)."
  ${EndIf}
SectionEnd

Function un.onInit
  ReadRegStr $0 HKLM "${UNINSTALL}" "InstallLocation"
  StrCpy $scope CurrentUser
  ${If} $0 == $INSTDIR
    StrCpy $scope AllUsers
    UserInfo::GetAccountType
    Pop $0
    ${If} $0 != Admin
      !insertmacro REFUSE 740 "quill is installed for all users; removing it needs administrator rights."
    ${EndIf}
  ${EndIf}
  !insertmacro USE_SCOPE
FunctionEnd

; Deletes a file; one that is in use gets eight seconds, more than a server without clients needs.
; After that it is moved out of the way. $0: the file.
Function un.DeleteFile
  StrCpy $2 32
  ${Do}
    ClearErrors
    Delete "$0"
    ${IfNot} ${Errors}
      Return
    ${EndIf}
    Sleep 250
    IntOp $2 $2 - 1
  ${LoopUntil} $2 == 0
  GetTempFileName $1
  Delete "$1"
  ClearErrors
  Rename "$0" "$1"
  ${If} ${Errors} ; on another disk
    Call un.MoveAside
  ${Else}
    Delete /REBOOTOK "$1"
  ${EndIf}
FunctionEnd

!macro UNINSTALL_FILE PATH
  ; What upgrades have moved aside, too.
  ClearErrors
  FindFirst $3 $4 "$INSTDIR${PATH}.*.old"
  ${DoUntil} ${Errors}
    ${GetParent} "$INSTDIR${PATH}" $0
    StrCpy $0 "$0\$4"
    Call un.DeleteFile
    ClearErrors
    FindNext $3 $4
  ${Loop}
  FindClose $3
  StrCpy $0 "$INSTDIR${PATH}"
  Call un.DeleteFile
!macroend
!macro UNINSTALL_FOLDER PATH
  RMDir "$INSTDIR${PATH}"
!macroend

Section Uninstall
  ExecWait '"$INSTDIR\quill.exe" /unregserver' $0
  ${If} $0 != 0
    !insertmacro REFUSE $0 "The server could not be unregistered (error $0)."
  ${EndIf}
  Delete "$SMPROGRAMS\quill\quill help.lnk"
  Delete "$SMPROGRAMS\quill\quill examples.lnk"
  RMDir "$SMPROGRAMS\quill"
  DeleteRegKey SHCTX "${UNINSTALL}"

  ; Only what was installed goes; a folder with files of the user stays.
  SetOutPath "$TEMP"
  !undef INSTALL_FILES
  !include "${FILES}"
  Delete "$INSTDIR\uninstall.exe"
  RMDir "$INSTDIR"
SectionEnd
