; The installer for Windows: for the user who runs it, without rights beyond his own.
;
;   makensis -DVERSION=… -DTREE=… -DFILES=… -DOUTPUT=… -DICON=… -DKIB=… Trevolt.nsi
;
; TREE is what is installed; FILES holds the macros InstallFiles and DeleteFiles, which name each file
; of it. What it takes on the command line: /S asks nothing, /PATH adds the folder of the programs to
; the user's PATH, /D=FOLDER, which comes last, is where it installs.
Unicode true
Target amd64-unicode
SetCompressor /SOLID lzma
RequestExecutionLevel user
AllowSkipFiles off ; what cannot be written ends it, when it is silent with status 2
ManifestDPIAware true

!include MUI2.nsh
!include FileFunc.nsh
!include LogicLib.nsh
!include Sections.nsh
!include WinCore.nsh
!include WordFunc.nsh
!include ${FILES}

!define UNINSTALL "Software\Microsoft\Windows\CurrentVersion\Uninstall\Trevolt"
!define PROGRAMS "Tools\Trevolt\bin"

Name "Trevolt"
OutFile "${OUTPUT}"
InstallDir "$LOCALAPPDATA\Programs\Trevolt"
InstallDirRegKey HKCU "${UNINSTALL}" "InstallLocation"
BrandingText "Trevolt ${VERSION}"
VIProductVersion "${VERSION}.0"
VIAddVersionKey "ProductName" "Trevolt"
VIAddVersionKey "ProductVersion" "${VERSION}"
VIAddVersionKey "FileVersion" "${VERSION}"
VIAddVersionKey "FileDescription" "Installs Trevolt"
VIAddVersionKey "LegalCopyright" "the Trevolt authors"

!define MUI_ICON "${ICON}"
!define MUI_UNICON "${ICON}"
!insertmacro MUI_PAGE_LICENSE "${TREE}\LICENSE"
!insertmacro MUI_PAGE_COMPONENTS
!insertmacro MUI_PAGE_DIRECTORY
!insertmacro MUI_PAGE_INSTFILES
!insertmacro MUI_UNPAGE_CONFIRM
!insertmacro MUI_UNPAGE_INSTFILES
!insertmacro MUI_LANGUAGE "English"

; Sets R0 to the user's PATH. A longer one than the installer's variables take sets R1 to 1: writing it
; back would cut it.
!macro READ_PATH
    StrCpy $R1 0
    StrCpy $R0 ""
    System::Call 'advapi32::RegGetValueW(p ${HKEY_CURRENT_USER}, w "Environment", w "Path", \
        i 0x10000006, p 0, p 0, *i .R2) i .R3'
    ${If} $R3 == 0
        IntOp $R2 $R2 / ${NSIS_CHAR_SIZE}
        StrLen $R3 "$INSTDIR\${PROGRAMS}"
        IntOp $R2 $R2 + $R3
        IntOp $R2 $R2 + 4
        ${If} $R2 > ${NSIS_MAX_STRLEN}
            StrCpy $R1 1
        ${Else}
            ReadRegStr $R0 HKCU "Environment" "Path"
        ${EndIf}
    ${ElseIf} $R3 != 2
        StrCpy $R1 1
    ${EndIf}
!macroend

!macro WRITE_PATH
    ${If} $R0 == ""
        DeleteRegValue HKCU "Environment" "Path"
    ${Else}
        WriteRegExpandStr HKCU "Environment" "Path" "$R0"
    ${EndIf}
    SendMessage ${HWND_BROADCAST} ${WM_SETTINGCHANGE} 0 "STR:Environment" /TIMEOUT=5000
!macroend

; Takes the folder of the programs out of R0.
!macro LEAVE_PATH
    ${WordReplace} ";$R0;" ";$INSTDIR\${PROGRAMS};" ";" "+" $R0
    ${WordReplace} "$R0" ";" "" "{}" $R0
!macroend

Section "Trevolt" SECTION_PROGRAMS
    SectionIn RO
    ; What an older version has laid there, and this one does not.
    ${If} ${FileExists} "$INSTDIR\uninstall.exe"
        ExecWait '"$INSTDIR\uninstall.exe" /S /UPDATE _?=$INSTDIR'
    ${EndIf}
    !insertmacro InstallFiles
    SetOutPath "$INSTDIR"
    WriteUninstaller "$INSTDIR\uninstall.exe"
    WriteRegStr HKCU "${UNINSTALL}" "DisplayName" "Trevolt"
    WriteRegStr HKCU "${UNINSTALL}" "DisplayVersion" "${VERSION}"
    WriteRegStr HKCU "${UNINSTALL}" "Publisher" "the Trevolt authors"
    WriteRegStr HKCU "${UNINSTALL}" "DisplayIcon" "$INSTDIR\${PROGRAMS}\Trevolt.exe"
    WriteRegStr HKCU "${UNINSTALL}" "InstallLocation" "$INSTDIR"
    WriteRegStr HKCU "${UNINSTALL}" "UninstallString" '"$INSTDIR\uninstall.exe"'
    WriteRegStr HKCU "${UNINSTALL}" "QuietUninstallString" '"$INSTDIR\uninstall.exe" /S'
    WriteRegDWORD HKCU "${UNINSTALL}" "EstimatedSize" ${KIB}
    WriteRegDWORD HKCU "${UNINSTALL}" "NoModify" 1
    WriteRegDWORD HKCU "${UNINSTALL}" "NoRepair" 1
SectionEnd

Section "Start menu" SECTION_MENU
    SetOutPath "$INSTDIR\${PROGRAMS}"
    CreateShortcut "$SMPROGRAMS\Trevolt.lnk" "$INSTDIR\${PROGRAMS}\Trevolt.exe"
    SetOutPath "$INSTDIR"
SectionEnd

Section /o "trevolt-cli in every command prompt (PATH)" SECTION_PATH
    !insertmacro READ_PATH
    ${If} $R1 == 1
        DetailPrint "PATH is too long to be changed here; add $INSTDIR\${PROGRAMS} by hand."
        SetErrorLevel 3
    ${Else}
        !insertmacro LEAVE_PATH
        ${If} $R0 != ""
            StrCpy $R0 "$R0;"
        ${EndIf}
        StrCpy $R0 "$R0$INSTDIR\${PROGRAMS}"
        !insertmacro WRITE_PATH
    ${EndIf}
SectionEnd

LangString DESCRIBE_PROGRAMS ${LANG_ENGLISH} "The window, the command line and their documents."
LangString DESCRIBE_MENU ${LANG_ENGLISH} "The window in the Start menu."
LangString DESCRIBE_PATH ${LANG_ENGLISH} "The command line is found without its folder."
!insertmacro MUI_FUNCTION_DESCRIPTION_BEGIN
    !insertmacro MUI_DESCRIPTION_TEXT ${SECTION_PROGRAMS} $(DESCRIBE_PROGRAMS)
    !insertmacro MUI_DESCRIPTION_TEXT ${SECTION_MENU} $(DESCRIBE_MENU)
    !insertmacro MUI_DESCRIPTION_TEXT ${SECTION_PATH} $(DESCRIBE_PATH)
!insertmacro MUI_FUNCTION_DESCRIPTION_END

Function .onInit
    ${GetParameters} $R0
    ClearErrors
    ${GetOptions} $R0 "/PATH" $R1
    ${IfNot} ${Errors}
        !insertmacro SelectSection ${SECTION_PATH}
    ${EndIf}
FunctionEnd

; Nothing but what was installed is deleted, and the settings that the window leaves beside itself: a
; folder that holds anything else stays. /UPDATE is for the next version, which goes on with the
; settings, the shortcut and the PATH.
Section "Uninstall"
    ${GetParameters} $R0
    ClearErrors
    ${GetOptions} $R0 "/UPDATE" $R1
    ${If} ${Errors}
        Delete "$INSTDIR\${PROGRAMS}\Trevo.ini"
        Delete "$SMPROGRAMS\Trevolt.lnk"
        !insertmacro READ_PATH
        ${If} $R1 == 1
            DetailPrint "PATH is too long to be changed here; take $INSTDIR\${PROGRAMS} out by hand."
        ${ElseIf} $R0 != ""
            StrCpy $R4 $R0
            !insertmacro LEAVE_PATH
            ${If} $R0 != $R4
                !insertmacro WRITE_PATH
            ${EndIf}
        ${EndIf}
        DeleteRegKey HKCU "${UNINSTALL}"
    ${EndIf}
    Delete "$INSTDIR\uninstall.exe"
    !insertmacro DeleteFiles
SectionEnd
