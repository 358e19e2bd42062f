#!/usr/bin/env bash
# Runs velk on the bundled example and compares all four files that it writes byte for byte.
# Usage: example.sh VELK EXAMPLES WORKERS
set -euo pipefail
velk=$1
examples=$2
workers=$3

folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT
cp "$examples"/{scaffolds.fa,reads.lib,reads_1.fq.gz,reads_2.fq.gz} "$folder"
cd "$folder"
"$velk" -l reads.lib -s scaffolds.fa -o found.fa -t "$workers"

# The order of the reads found, and that alone, depends on the number of workers.
gzip -dc "$examples/expected/found.t$workers.fa.gz" >expected.fa
cmp found.fa expected.fa
for side in contig contigPos gapsinfo; do
  cmp "scaffolds.fa.$side" "$examples/expected/scaffolds.fa.$side"
done
