#!/usr/bin/env bash
# Checks that each header compiles alone. Usage: headers.sh ROOT COMPILER
set -euo pipefail
root=$1
compiler=$2

cd "$root"
count=0
status=0
for header in {driver,libinfo,contig,kmer,placement,streaming,reads,check,tests/{reads,support}}/*.h; do
  count=$((count + 1))
  "$compiler" -std=c++20 -Wall -Wextra -I. -include "$header" -fsyntax-only -x c++ /dev/null ||
    { echo "$header does not compile alone" >&2; status=1; }
done
echo "$count headers"
exit "$status"
