#!/usr/bin/env bash
# Checks completion, of bash or of zsh, against what the programs themselves say.
# Usage: completion.sh bash|zsh ROOT RUN VELK [VELK-CHECK]   (RUN: velk-run's file, or no-run)
# bash: completes command lines by the function that completions/velk.bash gives to bash.
# zsh: looks at the syntax of completions/_velk, the programs that zsh takes it for, and the options
# that it hands to zsh's _arguments.
set -euo pipefail
shell=$1
root=$2
run=$3
shift 3

# options_of VELK [VELK-CHECK]: the options of the last of them, sorted, one a line. velk-check takes
# velk's options and has long ones of its own.
options_of() {
  {
    "$1" -h | sed -n 's/^\t\(-[A-Za-z]\)[\t ].*/\1/p' || true
    if [[ $# -gt 1 ]]; then
      "$2" --help | sed -n 's/^ *\(-h,\)\?\(--[a-z-]*\).*/\2/p'
    fi
  } | LC_ALL=C sort -u
}

# long_options_of COMMAND...: the options that the help of velk-run or a verb of it names, sorted.
long_options_of() {
  "$@" --help | sed -n 's/^ *\(-[A-Za-z]\),\(--[a-z-]*\).*/\1\n\2/p; s/^ *\(--[a-z-]*\).*/\1/p' |
    LC_ALL=C sort -u
}

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

# shellcheck disable=SC2317  # the completion calls it
nproc() { echo 3; }

failed=0
bash_completes() {
  # shellcheck source=completions/velk.bash
  source "$root/completions/velk.bash"
  folder=$(mktemp -d)
  trap 'rm -rf "$folder"' EXIT
  cd "$folder"
  mkdir sub
  touch reads.lib other.lib scaffolds.fa 'name with blanks.fa' old.contig note.md
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
  return "$failed"
}

# handed SERVICE [VERB]: the options handed to _arguments; each is [(EXCLUDED)][*]OPTION[TEXT]...
handed() {
  # shellcheck disable=SC2016  # for zsh
  zsh -fc 'fpath=($1 $fpath); autoload -U _velk; service=$2; words=($2 "$3"); _arguments() { print -rl -- "$@" }; _velk' \
    zsh "$root/completions" "$1" "${2-}" | sed -n 's/^([^)]*)//; s/^\*-/-/; /^-/s/\[.*//p' | LC_ALL=C sort
}

zsh_completes() {
  zsh -n "$root/completions/_velk"

  # shellcheck disable=SC2016  # for zsh
  taken=$(zsh -fc 'fpath=($1 $fpath); autoload -U compinit; compinit -D -u
    print -- $_comps[velk] $_comps[velk-check] $_comps[velk-run] $_comps[velk-report]' zsh "$root/completions")
  [[ $taken == "_velk _velk _velk _velk" ]] || { echo "zsh completes by: $taken"; exit 1; }

  diff <(options_of "$1") <(handed velk)
  if [[ $# -gt 1 ]]; then diff <(options_of "$@") <(handed velk-check); fi
  if [[ $run != no-run ]]; then
    diff <(long_options_of "$run") <(handed velk-run)
    for verb in extract plan task gather; do
      diff <(long_options_of "$run" "$verb") <(handed velk-run "$verb")
    done
    diff <(long_options_of "${run%/run/velk-run}/report/velk-report") <(handed velk-report)
  fi
}

"${shell}_completes" "$@"
