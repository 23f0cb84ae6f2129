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
