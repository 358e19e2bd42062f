#!/usr/bin/env bash
# Checks that each header compiles alone. The build shows it of those that a source includes first; this
# compiles the others. Usage: headers.sh ROOT COMPILER
set -euo pipefail

cd "$1"
mapfile -t headers < <(comm -23 <(printf '%s\n' {*,tests/*}/*.h | grep -v '^bench/' | sort) \
  <(awk 'FNR == 1 { first = 1 } /^#include/ { if (first) print $2; first = 0 }' {*,tests/*}/*.cpp |
    tr -d '"' | sort -u))

printf '%s\n' "${headers[@]}" |
  xargs -n 1 -P 2 "$2" -std=c++20 -Wall -Wextra -I. -fsyntax-only -x c++ /dev/null -include
echo "${#headers[@]} headers that no source includes first"
