#!/usr/bin/env bash
# Runs velk on a plain FASTA of about one batch (500000 reads) and looks at what its end becomes.
# Usage: batches.sh VELK RECORDS ENDING COUNTS FOUND
# RECORDS: records of the file. ENDING: newline or cut, how its last line ends.
# COUNTS: the expected counts of the "bufferNum: " lines.
# FOUND: the numbers, from 1, of the records expected in the output, in order.
set -euo pipefail
velk=$1
records=$2
ending=$3
counts=$4
found=$5

folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT
cd "$folder"

# One gap of 50 bases between two contigs of 120 pseudo-random bases.
bases() {
  awk -v seed="$1" 'BEGIN {
    for (i = 0; i < 120; ++i) {
      seed = (seed * 16807) % 2147483647
      printf "%s", substr("ACGT", int(seed / 65536) % 4 + 1, 1)
    }
  }'
}
left=$(bases 1)
printf '>scaffold1\n%s%s%s\n' "$left" "$(printf 'N%.0s' {1..50})" "$(bases 2)" >scaffold.fa
printf '[LIB]\nf=reads.fa\n' >reads.lib

# Four records are reads of 60 bases that run out over the left contig's end, each by a number of
# bases of its own, which its position will tell. All others are too short to be looked at.
awk -v left="$left" -v records="$records" 'BEGIN {
  over[1] = 5; over[2] = 10; over[500000] = 15; over[500001] = 20
  for (i = 1; i <= records; ++i) {
    read = i in over ? substr(left, 61 + over[i]) substr("CATTAGCATTAGCATTAGCATTAG", 1, over[i]) : "A"
    printf ">%d\n%s\n", i, read
  }
}' >reads.fa
if [[ $ending == cut ]]; then truncate -s -1 reads.fa; fi

number=0
for record in $found; do
  case $record in
    1) position=-55 ;;
    2) position=-50 ;;
    500000) position=-45 ;;
    500001) position=-40 ;;
  esac
  printf '>0\t50\t%d\t1\t0\t0\n' "$position"
  printf '%s\n' "$(sed -n "$((2 * record))p" reads.fa)"
  number=$((number + 1))
done >expected.fa
printf '>1\t2\t1\n0\t50\t%d\t120\t120\n' "$number" >expected.gapsinfo

"$velk" -l reads.lib -s scaffold.fa -o found.fa 2>velk.log
grep '^bufferNum: ' velk.log
diff <(sed -n 's/^bufferNum: //p' velk.log) <(tr ' ' '\n' <<<"$counts")
diff found.fa expected.fa
diff scaffold.fa.gapsinfo expected.gapsinfo
