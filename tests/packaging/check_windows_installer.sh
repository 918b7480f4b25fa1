#!/usr/bin/env bash
# Installs the Windows package silently under Wine, lets the installed program read labels, and uninstalls it:
# check_windows_installer.sh BUILD_OF_WINDOWS BUILD_OF_THE_TESTS
set -euo pipefail
windows=$(realpath "$1")
tests=$(realpath "$2")
export WINEPREFIX=$windows/wine/install-$$ WINEDEBUG=-all WINESERVER=/usr/lib/wine/wineserver64
export WINEDLLOVERRIDES='mscoree=;mshtml=;winemenubuilder.exe='
unset DISPLAY
wine=/usr/lib/wine/wine64
fail() {
  echo "the Windows installer: $*" >&2
  exit 1
}
run_key() { "$wine" reg query 'HKCU\Software\Microsoft\Windows\CurrentVersion\Run' 2>/dev/null | grep -a Vantrel; }
trap '"$WINESERVER" -k 2>/dev/null || true; rm -rf "$WINEPREFIX"' EXIT

# Nothing is needed but what every Windows has.
for program in "$windows"/bin/vantrel*.exe; do
  foreign=$(objdump -p "$program" | sed -n 's/.*DLL Name: //p' | tr '[:upper:]' '[:lower:]' |
    grep -vxE '(comctl32|comdlg32|gdi32|kernel32|msvcrt|shell32|user32|winmm)\.dll' || true)
  [ -z "$foreign" ] || fail "$(basename "$program") needs $foreign"
done

cp -al "$windows/wine/prefix" "$WINEPREFIX"
timeout 120 "$wine" "$windows"/vantrel-*-windows.exe /S 2>/dev/null || fail "it ends with $?"
folder=$(echo "$WINEPREFIX"/drive_c/users/*/AppData/Local/Programs/Vantrel)
[ -f "$folder/vantrel.exe" ] || fail "nothing is installed"
run_key | grep -qa 'vantrel.exe' || fail "it is not started at log-on"

VANTREL_E2E=wine WINEDEBUG=fixme-all VANTREL_WINDOWS_INSTALLED=$folder timeout 300 "$tests/bin/e2e_main_job_test" \
  --gtest_filter='*LabelsArriveOnEveryChannel/laser' >"$windows/installed.log" 2>&1 ||
  { tail -n 30 "$windows/installed.log" >&2; fail "the installed program does not read"; }

timeout 120 "$wine" "$folder/uninstall.exe" /S 2>/dev/null || fail "the uninstaller ends with $?"
for _ in $(seq 100); do
  [ -e "$folder" ] || break
  sleep 0.2
done
[ ! -e "$folder" ] || fail "left behind: $(ls "$folder")"
! run_key >/dev/null || fail "it is still started at log-on"
! "$wine" reg query 'HKCU\Software\Microsoft\Windows\CurrentVersion\Uninstall\Vantrel' >/dev/null 2>&1 || fail "its key is left behind"
echo "The Windows package installs, reads and goes."
