# shellcheck shell=bash
# Completion of velk and velk-check in bash: options, and for an option's value what fits it.

# _velk_files PATTERN: offers folders and the files that PATTERN (as in [[ == ]]) fits; all files
# where none fits.
_velk_files() {
  local current=${COMP_WORDS[COMP_CWORD]} name fitting=() all=()
  compopt -o filenames 2>/dev/null || true
  while IFS= read -r name; do
    all+=("$name")
    # shellcheck disable=SC2053  # a pattern
    if [[ -d $name || $name == $1 ]]; then fitting+=("$name"); fi
  done < <(compgen -f -- "$current")
  COMPREPLY=("${fitting[@]}")
  [[ ${#fitting[@]} -gt 0 ]] || COMPREPLY=("${all[@]}")
}

_velk_words() {
  mapfile -t COMPREPLY < <(compgen -W "$1" -- "${COMP_WORDS[COMP_CWORD]}")
}

# The value of velk's option $1.
_velk_value() {
  case $1 in
    -l) _velk_files '*.@(lib|txt)' ;;
    -s) _velk_files '*.@(fa|fasta|fna)' ;;
    -c) _velk_files '*.@(contig|fa|fasta|fna)' ;;
    -o) _velk_files '*' ;;
    -t) _velk_words "$(seq "$(nproc 2>/dev/null || echo 1)")" ;;
    --sample) _velk_words "1000 10000 100000" ;;
    *) COMPREPLY=() ;;
  esac
}

_velk() {
  local offered=' -l -s -c -o -t -k -r -m -f -L -C -O -M -h ' i word
  [[ ${COMP_WORDS[0]##*/} != velk-check ]] ||
    offered+='--deep --json --sample --list-findings --help --version '
  # Options and values take turns; only what velk-check has of its own may have no value.
  for ((i = 1; i < COMP_CWORD; ++i)); do
    word=${COMP_WORDS[i]}
    case $word in
      -h | --deep | --json | --list-findings | --help | --version) ;;
      -*)
        if ((i + 1 == COMP_CWORD)); then
          _velk_value "$word"
          return
        fi
        ((++i))
        ;;
    esac
    offered=${offered/" $word "/ }
  done
  _velk_words "$offered"
}

complete -F _velk velk velk-check
