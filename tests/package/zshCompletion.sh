#!/usr/bin/env bash
# Looks at completions/_velk: its syntax, the programs that zsh takes it for, and the options that it
# hands to zsh's _arguments. Usage: zshCompletion.sh ROOT VELK [VELK-CHECK]
set -euo pipefail
root=$1
shift
here=$(dirname "${BASH_SOURCE[0]}")
# shellcheck source=tests/package/programHelp.sh
source "$here/programHelp.sh"

zsh -n "$root/completions/_velk"

# shellcheck disable=SC2016  # for zsh
taken=$(zsh -fc 'fpath=($1 $fpath); autoload -U compinit; compinit -D -u
  print -- $_comps[velk] $_comps[velk-check]' zsh "$root/completions")
[[ $taken == "_velk _velk" ]] || { echo "zsh completes by: $taken"; exit 1; }

# handed SERVICE: the options handed to _arguments; each is [(EXCLUDED)]OPTION[TEXT]...
handed() {
  # shellcheck disable=SC2016  # for zsh
  zsh -fc 'fpath=($1 $fpath); autoload -U _velk; service=$2; _arguments() { print -rl -- "$@" }; _velk' \
    zsh "$root/completions" "$1" | sed 's/^([^)]*)//; s/\[.*//' | LC_ALL=C sort
}

diff <(options_of "$1") <(handed velk)
if [[ $# -gt 1 ]]; then diff <(options_of "$@") <(handed velk-check); fi
