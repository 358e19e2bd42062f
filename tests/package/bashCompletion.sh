#!/usr/bin/env bash
# Completes command lines by the function that completions/velk.bash gives to bash.
# Usage: bashCompletion.sh ROOT RUN VELK [VELK-CHECK]   (RUN: velk-run's file, or no-run)
set -euo pipefail
root=$1
run=$2
shift 2
here=$(dirname "${BASH_SOURCE[0]}")
# shellcheck source=tests/package/programHelp.sh
source "$here/programHelp.sh"
# shellcheck source=completions/velk.bash
source "$root/completions/velk.bash"

folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT
cd "$folder"
mkdir sub
touch reads.lib other.lib scaffolds.fa 'name with blanks.fa' old.contig note.md
failed=0
# shellcheck disable=SC2317  # the completion calls it
nproc() { echo 3; }

# offered WORD...: what is offered for the last word, sorted, with "|" behind each.
offered() {
  local name
  name=$(complete -p "$1" | sed 's/.*-F \([^ ]*\).*/\1/')
  COMP_WORDS=("$@") COMP_CWORD=$(($# - 1)) COMPREPLY=()
  "$name"
  [[ ${#COMPREPLY[@]} -eq 0 ]] || printf '%s\n' "${COMPREPLY[@]}" | LC_ALL=C sort |
    sed 's/$/|/' | tr -d '\n'
}

# expect OFFERED WORD...
expect() {
  local expected=$1 actual
  shift
  actual=$(offered "$@")
  [[ $actual == "$expected" ]] && return
  echo "$*: expected $expected, offered $actual"
  failed=1
}

line_of() {
  options_of "$@" | sed 's/$/|/' | tr -d '\n'
}

expect "$(line_of "$1")" velk ''
expect '-s|' velk -s
expect 'other.lib|reads.lib|sub|' velk -l ''
expect 'reads.lib|' velk -l re
expect 'name with blanks.fa|scaffolds.fa|sub|' velk -l reads.lib -s ''
expect 'name with blanks.fa|old.contig|scaffolds.fa|sub|' velk -c ''
expect 'note.md|' velk -s no
expect '' velk -s nothing
expect 'name with blanks.fa|note.md|' velk -o n
expect '1|2|3|' velk -t ''
expect '' velk -k 3
expect "$(line_of "$1" | sed 's/-l|//; s/-t|//')" velk -l reads.lib -t 2 ''
expect "$(line_of "$1" | sed 's/-o|//')" velk -o -s '' # a value that looks like an option
if [[ $# -gt 1 ]]; then
  expect "$(line_of "$@")" velk-check ''
  expect "$(line_of "$@" | sed 's/--deep|//; s/-s|//')" velk-check --deep -s scaffolds.fa ''
  expect '--deep|' velk-check --d
  expect 'other.lib|reads.lib|sub|' velk-check --json -l ''
  expect '1000|10000|100000|' velk-check --sample 1
fi
if [[ $run != no-run ]]; then
  touch reads_1.fq.gz table.tsv chr.agp
  marked() { long_options_of "$@" | sed 's/$/|/' | tr -d '\n'; }
  expect "$(marked "$run")" velk-run -
  for verb in extract plan task gather; do
    expect "$(marked "$run" "$verb")" velk-run "$verb" -
  done
  expect 'name with blanks.fa|reads_1.fq.gz|scaffolds.fa|sub|' velk-run ''
  expect 'reads_1.fq.gz|' velk-run scaffolds.fa re
  expect 'reads_1.fq.gz|' velk-run scaffolds.fa --pairs one.fq r
  expect 'sub|table.tsv|' velk-run scaffolds.fa --samplesheet ''
  expect 'chr.agp|sub|' velk-run scaffolds.fa --agp ''
  expect '1|2|3|' velk-run scaffolds.fa -t ''
  expect '' velk-run scaffolds.fa -k ''
  expect 'sub|' velk-run extract ''
  touch plan.json
  expect 'plan.json|sub|' velk-run gather ''
  expect 'sub|' velk-run gather plan.json ''
  expect 'plan.json|sub|' velk-run --plan ''
  expect 'sub|' velk-run task plan.json 0 --inputs-root ''
  expect "$(marked "${run%/run/velk-run}/report/velk-report")" velk-report -
  expect 'sub|' velk-report --text ''
fi
exit "$failed"
