#!/usr/bin/env bash
# Checks what CMake makes of the options that it is given.
# Usage: configuration.sh defaults CMAKE SOURCE
#            for somebody who asks for nothing velk is optimised, and whatever a newer compiler warns
#            of does not end the build
#        configuration.sh isal CMAKE SOURCE COMPILER
#            which library inflates, where an ISA-L is new enough and where it is not
set -euo pipefail
cmake=$2
source=$3

folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT

defaults() {
  env -u CMAKE_BUILD_TYPE "$cmake" -S "$source" -B "$folder" -G Ninja -DVELK_TESTS=OFF \
    -DVELK_CHECK=OFF -DVELK_RUN=OFF >"$folder/log"
  grep -x 'CMAKE_BUILD_TYPE:STRING=Release' "$folder/CMakeCache.txt"
  grep -q -e '-O3 .*-Wall .*kmer/hashSet.cpp' "$folder/compile_commands.json"
  if grep -e -Werror "$folder/compile_commands.json"; then
    echo "Warnings are errors." >&2
    return 1
  fi
}

# configure ISAL MAJOR MINOR: sets `said` and `status` to what CMake says where that ISA-L is.
configure() {
  printf '#define ISAL_MAJOR_VERSION %d\n#define ISAL_MINOR_VERSION %d\n' "$2" "$3" >"$folder/isa-l.h"
  printf '#define ISAL_PATCH_VERSION 0\n' >>"$folder/isa-l.h"
  rm -rf "$folder/build"
  status=0
  said=$("$cmake" -S "$source" -B "$folder/build" -G Ninja -DCMAKE_CXX_COMPILER="$compiler" \
    -DVELK_TESTS=OFF -DVELK_CHECK=OFF -DVELK_RUN=OFF -DVELK_ISAL="$1" -DISAL_INCLUDE_DIR="$folder" \
    -DISAL_LIBRARY="$folder/libisal.so" 2>&1) || status=$?
}

# expect STATUS TEXT
expect() {
  [[ $status -eq $1 && $said == *"$2"* ]] && return
  printf 'Expected status %s and "%s", got %s and:\n%s\n' "$1" "$2" "$status" "$said" >&2
  exit 1
}

isal() {
  compiler=$1
  : >"$folder/libisal.so"
  configure ON 2 30
  expect 0 "inflated by ISA-L 2.30.0"
  configure AUTO 3 0
  expect 0 "inflated by ISA-L 3.0.0"
  configure ON 2 29
  expect 1 "version 2.29.0 is older than 2.30"
  configure AUTO 2 29
  expect 0 "inflated by zlib"
  configure OFF 2 30
  expect 0 "inflated by zlib"
}

"$1" "${@:4}"
