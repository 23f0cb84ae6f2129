#!/bin/sh
# Shows the tool on the built-in simulated adapters. Run through ./dev demo.
set -eu

show() {
  printf '\n$ %s\n' "$*"
  "$@"
}

show vaskdfc version
show vaskdfc list
show vaskdfc show 0
show vaskdfc ports 1 --discovered
show vaskdfc -o json list

show vaskdfc luns 0 --tree
show vaskdfc nameserver 0
show vaskdfc stats 0 --watch 1 --count 3
show vaskdfc link 0
show vaskdfc pci dump 0
show vaskdfc qos list 1

# Changes are written to files here and outlive each command, as in an adapter's non-volatile memory.
state=$(mktemp -d)
trap 'rm -rf "$state"' EXIT
trap 'exit 1' INT TERM
export VMKMGMT_SIM_STATE="$state"

show vaskdfc fcoe params get 0
show vaskdfc fcoe params set 0 --vlan 1002 --yes
show vaskdfc fcoe params get 0
show vaskdfc region show 0 23

show vaskdfc params set 0 lun_queue_depth 64 --yes
show vaskdfc loopback run 0 --count 100 --size 65536 --yes
