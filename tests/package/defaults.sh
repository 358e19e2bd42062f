#!/usr/bin/env bash
# Checks how velk is built by somebody who asks for nothing: optimised, and whatever a newer
# compiler warns of does not end the build. Usage: defaults.sh CMAKE SOURCE
set -euo pipefail
cmake=$1
source=$2

build=$(mktemp -d)
trap 'rm -rf "$build"' EXIT
env -u CMAKE_BUILD_TYPE "$cmake" -S "$source" -B "$build" -G Ninja -DVELK_TESTS=OFF \
  -DVELK_CHECK=OFF -DVELK_RUN=OFF >"$build/log"
grep -x 'CMAKE_BUILD_TYPE:STRING=Release' "$build/CMakeCache.txt"
grep -q -e '-O3 .*-Wall .*kmer/hashSet.cpp' "$build/compile_commands.json"
if grep -e -Werror "$build/compile_commands.json"; then
  echo "Warnings are errors." >&2
  exit 1
fi
