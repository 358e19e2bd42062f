#!/usr/bin/env bash
# Looks for the hardening of released programs, first in a program that has none.
# Usage: hardening.sh COMPILER COMPILE_COMMANDS PROGRAM...
set -euo pipefail
compiler=$1
commands=$2
shift 2

# missing_in PROGRAM: prints what of its hardening is not there.
missing_in() {
  local headers symbols
  headers=$(readelf --wide --file-header --program-headers --dynamic "$1")
  symbols=$(readelf --wide --syms "$1")
  grep -q 'Type: *DYN' <<<"$headers" || echo "position independent code"
  grep -q GNU_RELRO <<<"$headers" || echo "relocations read-only"
  grep -qE 'BIND_NOW|Flags:.* NOW' <<<"$headers" || echo "binding at the start"
  grep -q 'GNU_STACK.* RW ' <<<"$headers" || echo "a stack without code"
  grep -q __stack_chk_fail <<<"$symbols" || echo "stack protector"
}

folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT
echo 'int main() { return 0; }' >"$folder/bare.cpp"
"$compiler" -no-pie -fno-pie -fno-stack-protector -Wl,-z,norelro,-z,lazy,-z,execstack \
  -o "$folder/bare" "$folder/bare.cpp"
missing_in "$folder/bare" >"$folder/bare.txt"
if [[ $(wc -l <"$folder/bare.txt") -ne 5 ]]; then
  echo "Of the 5 things that a bare program lacks were seen only:"
  cat "$folder/bare.txt"
  exit 1
fi

status=0
for program in "$@"; do
  missing_in "$program" >"$folder/missing.txt"
  if [[ -s $folder/missing.txt ]]; then
    echo "$program lacks:"
    cat "$folder/missing.txt"
    status=1
  fi
done

# The programs call nothing that fortified forms exist of, so they cannot show it: their compilation
# must.
compiled=$(grep -c '"command": .*/driver/main\.cpp"' "$commands" || true)
fortified=$(grep -c '"command": .* -D_FORTIFY_SOURCE=[23] .*/driver/main\.cpp"' "$commands" || true)
if [[ $compiled -eq 0 || $compiled -ne $fortified ]]; then
  echo "$fortified of $compiled compilations of driver/main.cpp are fortified"
  status=1
fi
exit "$status"
