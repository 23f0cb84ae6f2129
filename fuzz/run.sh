#!/bin/sh
# Runs one fuzzer over its seeds, what was found before and what it found itself, then for so many seconds over inputs of its own:
#
#   run.sh PROGRAM SECONDS
#
# Inputs that reach something new are kept in corpus/ of the build, those that break something in crashes/. Prints one line, and the
# fuzzer's last words when it found something; then the exit code is not 0.
set -eu
program=$1
seconds=$2

sources=$(cd "$(dirname "$0")" && pwd)
build=$(cd "$(dirname "$program")/.." && pwd)
target=$(basename "$program")
log=$build/$target.log
mkdir -p "$build/corpus/$target" "$build/crashes"

# What the project has anyhow and is a seed as well.
case $target in
  regions) more_seeds=$sources/../tests/regions/corpus ;;
  scenario) more_seeds=$sources/../simulator/scenarios ;;
  *) more_seeds= ;;
esac

set -- "$build/corpus/$target"
for folder in "$sources/corpus/$target" "$sources/regressions/$target" "$more_seeds"; do
  [ ! -d "$folder" ] || set -- "$@" "$folder"
done
dictionary=$sources/$target.dict
[ ! -f "$dictionary" ] || set -- "-dict=$dictionary" "$@"

# Short stacks of allocations and little memory kept after it is freed: deep ones would take a good part of the time.
ASAN_OPTIONS=malloc_context_size=4:quarantine_size_mb=32:${ASAN_OPTIONS-}
export ASAN_OPTIONS

status=0
"$program" -max_total_time="$seconds" -timeout=10 -print_final_stats=1 -artifact_prefix="$build/crashes/$target-" "$@" \
  >"$log" 2>&1 || status=$?

executions=$(sed -n 's/^stat::number_of_executed_units: *//p' "$log")
reached=$(grep -o 'cov: [0-9]* ft: [0-9]* corp: [0-9]*' "$log" | tail -n 1)
if [ "$status" -eq 0 ]; then
  found=nothing
else
  found=something
  tail -n 60 "$log"
fi
printf '%s %s: %s executions, %s, found %s\n' "$(basename "$build")" "$target" "${executions:-no}" "${reached:-nothing reached}" \
  "$found"
exit "$status"
