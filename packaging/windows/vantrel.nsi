; The installer, for the user who runs it: programs, start at log-on, uninstaller. /S asks nothing.
; makensis -DSTAGED=folder of the files -DOUT=file
Target amd64-unicode
Name "Vantrel"
OutFile "${OUT}"
RequestExecutionLevel user
InstallDir "$LOCALAPPDATA\Programs\Vantrel"
SetCompressor lzma
Page directory
Page instfiles
UninstPage uninstConfirm
UninstPage instfiles

!define UNINSTALL "Software\Microsoft\Windows\CurrentVersion\Uninstall\Vantrel"
!define RUN "Software\Microsoft\Windows\CurrentVersion\Run"

; A program that runs is asked to end; its file stays locked a moment longer.
!macro EndProgram
  FindWindow $0 "Vantrel"
  StrCmp $0 0 +3
    SendMessage $0 16 0 0 /TIMEOUT=5000
    Sleep 2000
!macroend

Section
  !insertmacro EndProgram
  SetOutPath "$INSTDIR"
  File "${STAGED}\vantrel.exe"
  File "${STAGED}\vantrel-watch.exe"
  File "${STAGED}\vantrel-trigger.exe"
  File "${STAGED}\windows.md"
  WriteUninstaller "$INSTDIR\uninstall.exe"
  WriteRegStr HKCU "${RUN}" "Vantrel" '"$INSTDIR\vantrel.exe"'
  WriteRegStr HKCU "${UNINSTALL}" "DisplayName" "Vantrel"
  WriteRegStr HKCU "${UNINSTALL}" "UninstallString" '"$INSTDIR\uninstall.exe"'
SectionEnd

; The terminal folder, with the settings, stays.
Section "Uninstall"
  !insertmacro EndProgram
  Delete "$INSTDIR\vantrel.exe"
  Delete "$INSTDIR\vantrel-watch.exe"
  Delete "$INSTDIR\vantrel-trigger.exe"
  Delete "$INSTDIR\windows.md"
  Delete "$INSTDIR\uninstall.exe"
  RMDir "$INSTDIR"
  DeleteRegValue HKCU "${RUN}" "Vantrel"
  DeleteRegKey HKCU "${UNINSTALL}"
SectionEnd
