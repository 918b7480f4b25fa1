#!/usr/bin/env bash
# Makes the Debian packages from a build folder, has every file in them judged by its own checker, installs them on this
# machine, lets the demonstration run with the installed programs, and removes them again.
#   check_packages.sh BUILD_FOLDER
set -euo pipefail
root=$(cd "$(dirname "$0")/../.." && pwd)
build=$(cd "$1" && pwd)
packages=$build/packages
as_root=()
[ "$(id -u)" -eq 0 ] || as_root=(sudo)

step() { printf -- '-- %s\n' "$*"; }

step "The packages"
rm -rf "$packages"
(cd "$build" && cpack -G DEB -B "$packages" >"$build/cpack.log") || { cat "$build/cpack.log" >&2; exit 1; }
debs=("$packages"/*.deb)
[ ${#debs[@]} -eq 2 ] || { echo "two packages were to be made, not: ${debs[*]}" >&2; exit 1; }

step "lintian"
lintian --allow-root --fail-on error --tag-display-limit 0 "${debs[@]}"

unpacked=$packages/unpacked
for deb in "${debs[@]}"; do
  dpkg-deb -x "$deb" "$unpacked"
done

step "Every program has its manual, and the manuals are well-formed"
for program in "$unpacked"/usr/bin/*; do
  manual=$unpacked/usr/share/man/man1/$(basename "$program").1.gz
  [ -f "$manual" ] || { echo "no manual for $(basename "$program")" >&2; exit 1; }
  gunzip -c "$manual" | mandoc -T lint -W warning
done

step "Desktop entries and software catalogue"
desktop-file-validate "$unpacked"/usr/share/applications/*.desktop "$unpacked"/usr/share/vantrel/autostart/*.desktop
appstreamcli validate --no-net --no-color "$unpacked"/usr/share/metainfo/*.xml
bash -n "$unpacked"/usr/share/bash-completion/completions/*

step "The first day of a new user, on a machine of its own"
"${as_root[@]}" "$root/tests/packaging/log_on.sh" "$packages"

if dpkg-query -W -f='${Status}' vantrel 2>/dev/null | grep -q 'ok installed'; then
  echo "vantrel is installed here already: the installation is not tried" >&2
  exit 0
fi
step "Installed"
trap '"${as_root[@]}" apt-get remove -y -q vantrel vantrel-simulator >/dev/null' EXIT
"${as_root[@]}" env DEBIAN_FRONTEND=noninteractive apt-get install -y -q --no-install-recommends "${debs[@]}" \
  >"$build/installation.log" 2>&1 || { cat "$build/installation.log" >&2; exit 1; }

step "Units"
runtime=$(mktemp -d)
XDG_RUNTIME_DIR=$runtime systemd-analyze --user --recursive-errors=no --man=no verify vantrel{,-publish,-trigger}.service
rm -rf "$runtime"
if udevadm verify --help >/dev/null 2>&1; then
  udevadm verify /lib/udev/rules.d/60-vantrel.rules
fi

step "The demonstration, with the installed programs"
python3 "$root/scripts/demo.py" --programs /usr/bin imager </dev/null
