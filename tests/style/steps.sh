#!/usr/bin/env bash
# Checks that the patches of scripts/bench steps still apply, and begin with the two lines that
# bench/steps.py reads. Usage: steps.sh ROOT
set -euo pipefail
root=$1

count=0
status=0
for file in "$root"/bench/steps/*.patch; do
  count=$((count + 1))
  name=bench/steps/$(basename "$file")
  mapfile -t -n 2 lines <"$file"
  [[ ${lines[0]} =~ ^'# '[A-Z].*\.$ && ${lines[1]} =~ ^'# run: '(none|none\ -m\ 1000000|plain|plain\ -k\ 15)$ ]] ||
    { echo "$name: begins with other lines than a sentence and a run" >&2; status=1; }
  patch --dry-run --quiet --forward --fuzz=0 -p1 -d "$root" <"$file" ||
    { echo "$name does not apply" >&2; status=1; }
done
echo "$count patches"
exit "$status"
