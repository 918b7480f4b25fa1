#!/usr/bin/env bash
# The first day of a new user, as README tells it, on a machine of its own: systemd as process 1 in namespaces over this
# machine's files, the packages installed there, sway with a terminal in front, the readers found, the user unit started
# at log-on in its sandbox, a label typed, the unit stopped. What it changes is gone with it.
#   log_on.sh PACKAGE_FOLDER
set -euo pipefail
packages=$(cd "$1" && pwd)
home=$(mktemp -d)
trap 'rmdir "$home"' EXIT

not_here() { echo "not tried here: $*"; exit 0; }
[ "$(id -u)" -eq 0 ] || not_here "only root can make the namespaces"

# boot: makes the root folder and becomes its process 1.
boot() {
  mount -t tmpfs tmpfs "$home"
  local root=$home/root
  mkdir "$home"/{above,work,root}
  mount -t overlay overlay -o "lowerdir=/,upperdir=$home/above,workdir=$home/work" "$root"
  mount -t proc proc "$root/proc"
  mount --bind "$root/proc/sys" "$root/proc/sys"
  mount -o remount,bind,ro "$root/proc/sys"
  mount -t sysfs -o ro sysfs "$root/sys"
  if [ "$(stat -fc %T /sys/fs/cgroup)" = cgroup2fs ]; then
    mount -t cgroup2 cgroup2 "$root/sys/fs/cgroup"
  else
    mount -t tmpfs tmpfs "$root/sys/fs/cgroup"
    mkdir "$root/sys/fs/cgroup/systemd"
    mount -t cgroup -o none,name=systemd,xattr cgroup "$root/sys/fs/cgroup/systemd"
  fi
  mount -t tmpfs -o mode=755 tmpfs "$root/run"
  mount -t tmpfs -o mode=1777 tmpfs "$root/tmp"
  mount -t tmpfs -o mode=755 tmpfs "$root/dev"
  for device in null zero full random urandom tty; do
    touch "$root/dev/$device"
    mount --bind "/dev/$device" "$root/dev/$device"
  done
  mkdir "$root"/dev/{pts,shm,mqueue}
  mount -t devpts -o newinstance,ptmxmode=0666,mode=620 devpts "$root/dev/pts"
  mount -t tmpfs -o mode=1777 tmpfs "$root/dev/shm"
  mount -t mqueue mqueue "$root/dev/mqueue"
  ln -s pts/ptmx "$root/dev/ptmx"
  ln -s /proc/self/fd "$root/dev/fd"
  mkdir "$root/run/packages" "$root/run/before"
  cp "$packages"/*.deb "$root/run/packages"
  cd "$root"
  pivot_root . run/before
  umount -l /run/before
  exec env -i container=other PATH=/usr/sbin:/usr/bin:/sbin:/bin /lib/systemd/systemd --system systemd.unit=basic.target
}
export home packages
unshare --mount --pid --fork --ipc --net --cgroup --propagation private --kill-child=KILL \
  bash -euc "$(declare -f boot); boot" </dev/null >/dev/null 2>&1 &
namespaces=$!
init=
trap 'kill -KILL $init 2>/dev/null || true; wait $namespaces 2>/dev/null || true; rmdir "$home"' EXIT

inside() { nsenter -t "$init" -m -p -i -n -C -r -w env -i PATH=/usr/sbin:/usr/bin:/sbin:/bin LC_ALL=C.UTF-8 "$@"; }
await() { # SECONDS COMMAND...
  local until=$((SECONDS + $1))
  while ! "${@:2}"; do
    [ $SECONDS -lt $until ] || return 1
    sleep 0.2
  done
}
booted() {
  kill -0 $namespaces 2>/dev/null || not_here "no namespaces are given"
  init=$(pgrep -P $namespaces) && [ "$(inside systemctl is-system-running 2>/dev/null)" = running ]
}
await 40 booted || not_here "systemd does not come up in namespaces of its own"

inside useradd --create-home --groups dialout worker
user=$(inside id -u worker)
inside systemctl start "user@$user" || not_here "nobody can log on"
inside setpriv --reuid worker --regid worker --init-groups unshare -U true || not_here "users get no namespaces"
inside dpkg -i -R /run/packages >/dev/null

# An adapter that readers come with: its seat's user may open it, ModemManager and brltty leave it alone.
inside mkdir -p /run/udev/rules.d
inside tee /run/udev/rules.d/50-adapter.rules >/dev/null <<'RULE'
KERNEL=="ptmx", ENV{ID_BUS}="usb", ENV{ID_VENDOR_ID}="0403", ENV{ID_MODEL_ID}="6001", ENV{BRLTTY_BRAILLE_DRIVER}="hm"
RULE
adapter=$(inside udevadm test --action=add /sys/class/tty/ptmx 2>&1)
grep -q '^CURRENT_TAGS=.*:uaccess:' <<<"$adapter" && grep -q '^ID_MM_PORT_IGNORE=1$' <<<"$adapter" &&
  ! grep -qE '^BRLTTY_BRAILLE_DRIVER=|60-vantrel.rules.*(Invalid|Unknown|ignor)' <<<"$adapter" ||
  { echo "log_on.sh: the rule for udev does not work:" "$adapter" >&2; exit 1; }

as_user() {
  inside setpriv --reuid worker --regid worker --init-groups env HOME=/home/worker USER=worker \
    XDG_RUNTIME_DIR="/run/user/$user" bash -euc "cd; $(declare -f await); $*"
}
failed() { echo "log_on.sh: $*" >&2; as_user 'journalctl --user --no-pager -o cat | tail -n 30' >&2; exit 1; }

as_user 'mkdir -p ~/.config/sway /tmp/readers; chmod 700 /tmp/readers; mkfifo /tmp/commands
  echo "include /usr/share/vantrel/sway.conf" > ~/.config/sway/config
  exec 3<>/tmp/commands
  setsid vantrel-readers --terminal /tmp/readers --quiet <&3 >/tmp/readers.log 2>&1 &
  await 10 test -e /tmp/readers/COM2
  vantrel-setup --yes $(readlink /tmp/readers/COM1) 2>/dev/null' || failed "no reader was found"
# As a tty: nobody but its group may use it.
inside sh -c 'chown root:dialout /dev/pts/0; chmod 660 /dev/pts/0'

as_user 'WLR_BACKENDS=headless WLR_RENDERER=pixman WLR_LIBINPUT_NO_DEVICES=1 setsid sway >/tmp/sway.log 2>&1 &
  await 60 systemctl --user -q is-active vantrel' || failed "the unit does not start with sway"
as_user 'ready() { vantrel-watch --status | grep -q "\"ready\":true,.*\"on\":true,.*\"keys\":\"wayland\",\"settingsOpen\":false"; }
  await 20 ready' || failed "it does not get ready in the background: $(as_user vantrel-watch --status)"

as_user 'read_only() { nsenter -t $(systemctl --user show -p MainPID --value vantrel) -U -m --preserve-credentials \
      sh -c "! touch $1 2>/dev/null"; }
  read_only ~/.profile; read_only /tmp/x; read_only /var/tmp/x; ! read_only ~/.local/share/vantrel/terminal/x
  rm ~/.local/share/vantrel/terminal/x' || failed "the sandbox is not what docs/security.md says"

# Another user of the machine.
inside setpriv --reuid nobody --regid nogroup --clear-groups bash -eu <<'STRANGER' || failed "a stranger gets in"
export VANTREL_TERMINAL=/home/worker/.local/share/vantrel/terminal
refused() { if "$@" 2>/dev/null; then echo "a stranger may: $*" >&2; exit 1; fi; }
write() { true >>"$1"; }
test -e /dev/mqueue/vantrel-*
test -e /dev/shm/sem.vantrel-*
for shared in /dev/mqueue/vantrel-* /dev/shm/sem.vantrel-* "$VANTREL_TERMINAL/Vantrel.lock"; do
  refused cat "$shared"
  refused write "$shared"
done
refused vantrel-trigger down
refused vantrel-watch --status
refused pkill -x vantrel
STRANGER

as_user 'sway() { swaymsg -s $XDG_RUNTIME_DIR/sway-ipc.*.sock "$@"; }
  in_front() { test -e /tmp/typed && sway -r -t get_tree | tr -d "\n" | grep -q "\"focused\": true.*\"app_id\": \"foot\""; }
  sway -q exec "foot -c /dev/null sh -c \"cat > /tmp/typed\""
  await 20 in_front
  echo "label 11 4006381333931" > /tmp/commands
  vantrel-trigger press 2000
  await 10 test -s /tmp/typed
  [ "$(cat /tmp/typed)" = 4006381333931 ]' || failed "the label was not typed: $(inside cat /tmp/typed)"
echo "A label was typed into foot on sway"

as_user 'timeout 20 systemctl --user stop vantrel
  [ "$(systemctl --user show -p Result --value vantrel)" = success ]
  [ -z "$(ls /dev/mqueue)" ]' || failed "the unit does not end cleanly"
echo "systemctl --user stop ended it"
