#!/bin/sh
# A sample of each long run, with another seed every day, all at once since they mostly wait: samples.sh PROGRAMS
set -u
folder=$(dirname "$0")
kept=$(mktemp -d)
trap 'rm -rf "$kept"' EXIT
cc -shared -fPIC -O1 "$folder/faults.c" -o "$kept/faults.so" -ldl || exit 1
# Calls that a run meets so seldom that all of them have been gone through.
seldom=fsync,rename,mq_open,mq_send,mq_receive,mq_getattr,sem_open,sem_post,flock,tcgetattr,tcsetattr,accept4,pthread_create
run() {
  name=$1
  shift
  "$folder/$name.py" "$@" >"$kept/$name" 2>&1 || touch "$kept/failed"
}
run kills "$1" 6 &
run soak "$1" 40 &
run faults "$1" 4 --shim "$kept/faults.so" --calls "$seldom" &
run order "$1" --shim "$kept/faults.so" &
wait
for name in kills soak faults order; do
  echo "$name: $(cat "$kept/$name")"
done
[ ! -e "$kept/failed" ]
