#!/usr/bin/env bash
# Looks at completions/_velk: its syntax, the programs that zsh takes it for, and the options that it
# hands to zsh's _arguments. Usage: zshCompletion.sh ROOT RUN VELK [VELK-CHECK]
# RUN: velk-run's file, or no-run
set -euo pipefail
root=$1
run=$2
shift 2
here=$(dirname "${BASH_SOURCE[0]}")
# shellcheck source=tests/package/programHelp.sh
source "$here/programHelp.sh"

zsh -n "$root/completions/_velk"

# shellcheck disable=SC2016  # for zsh
taken=$(zsh -fc 'fpath=($1 $fpath); autoload -U compinit; compinit -D -u
  print -- $_comps[velk] $_comps[velk-check] $_comps[velk-run] $_comps[velk-report]' zsh "$root/completions")
[[ $taken == "_velk _velk _velk _velk" ]] || { echo "zsh completes by: $taken"; exit 1; }

# handed SERVICE [VERB]: the options handed to _arguments; each is [(EXCLUDED)][*]OPTION[TEXT]...
handed() {
  # shellcheck disable=SC2016  # for zsh
  zsh -fc 'fpath=($1 $fpath); autoload -U _velk; service=$2; words=($2 "$3"); _arguments() { print -rl -- "$@" }; _velk' \
    zsh "$root/completions" "$1" "${2-}" | sed -n 's/^([^)]*)//; s/^\*-/-/; /^-/s/\[.*//p' | LC_ALL=C sort
}

diff <(options_of "$1") <(handed velk)
if [[ $# -gt 1 ]]; then diff <(options_of "$@") <(handed velk-check); fi
if [[ $run != no-run ]]; then
  diff <(long_options_of "$run") <(handed velk-run)
  for verb in extract plan task gather; do
    diff <(long_options_of "$run" "$verb") <(handed velk-run "$verb")
  done
  diff <(long_options_of "${run%/run/velk-run}/report/velk-report") <(handed velk-report)
fi
