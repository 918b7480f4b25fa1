#!/bin/sh
# Every fault once, first without a screen, then on one: all_faults.sh PROGRAMS [WORDS of faults.py ...]
set -u
folder=$(dirname "$0")
programs=$1
shift
status=0
"$folder/faults.py" "$programs" 0 --terminals 8 --shim "$programs/proof_faults.so" "$@" || status=1
# What only a screen meets, and the calls that the sheet makes too.
"$folder/faults.py" "$programs" 0 --terminals 4 --shim "$programs/proof_faults.so" --screen x \
  --calls socket,connect,recv,recvmsg,send,sendmsg,poll,open,read,write,fsync,rename,mmap,pthread_create "$@" || status=1
exit $status
