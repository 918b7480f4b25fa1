#!/bin/sh
# A sample of each long run, with another seed every day, all at once since they mostly wait: samples.sh PROGRAMS
set -u
folder=$(dirname "$0")
kept=$(mktemp -d)
trap 'rm -rf "$kept"' EXIT
cc -shared -fPIC -O1 "$folder/faults.c" -o "$kept/faults.so" -ldl || exit 1
# Calls that a run meets so seldom that all of them have been gone through.
seldom=fsync,rename,mq_open,mq_send,mq_receive,mq_getattr,sem_open,sem_post,flock,tcgetattr,tcsetattr,accept4,pthread_create
"$folder/kills.py" "$1" 6 >"$kept/kills" 2>&1 &
kills=$!
"$folder/soak.py" "$1" 40 >"$kept/soak" 2>&1 &
soak=$!
"$folder/faults.py" "$1" 4 --shim "$kept/faults.so" --calls "$seldom" >"$kept/faults" 2>&1 &
faults=$!
status=0
"$folder/order.py" "$1" --shim "$kept/faults.so" >"$kept/order" 2>&1 || status=1
wait "$kills" || status=1
wait "$soak" || status=1
wait "$faults" || status=1
for run in kills soak faults order; do
  echo "$run: $(cat "$kept/$run")"
done
exit $status
