#!/usr/bin/env bash
# Configures velk with an ISA-L that is new enough, and with one that is not.
# Usage: isal.sh CMAKE BUILD SOURCE COMPILER
set -euo pipefail
cmake=$1
source=$3
compiler=$4
mkdir -p "$2/tmp"
folder=$(mktemp -d "$2/tmp/isal.XXXXXX")
trap 'rm -rf "$folder"' EXIT
: >"$folder/libisal.so"

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
