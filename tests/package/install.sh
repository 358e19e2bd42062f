#!/usr/bin/env bash
# Installs a build below a folder of its own and compares the list of what lies there.
# Usage: install.sh CMAKE BUILD ROOT CHECKER RUN
# CHECKER: velk-check's file, or no-checker; RUN: velk-run's file, or no-run
set -euo pipefail
cmake=$1
build=$2
root=$3
checker=$4
run=$5

place=$build/tests/package/install
rm -rf "$place"
DESTDIR=$place "$cmake" --install "$build" --prefix /usr >/dev/null

# listed PROGRAM: its files.
listed() {
  awk -v heading="--- $1" '/^---/{listed = $0 == heading; next} listed' "$root/tests/package/installed.txt"
}

expected() {
  listed velk
  (cd "$root" && find examples -type f) | sed 's#^#644 usr/share/doc/velk/#'
  [[ $checker == no-checker ]] || listed velk-check
  [[ $run == no-run ]] || listed velk-run
}

diff <(expected | LC_ALL=C sort) <(cd "$place" && find . -type f -printf '%m %P\n' | LC_ALL=C sort)
# It runs from where it lies; its help ends with status 1.
{ "$place/usr/bin/velk" -h || true; } | grep '^Usage:'
