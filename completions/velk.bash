# shellcheck shell=bash
# Completion of velk, velk-check, velk-run and velk-report in bash: options, and for an option's value what fits it.

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

# The value of velk-run's option $1, and of an option before it that takes several; status 1: none.
_velk_run_value() {
  case $1 in
    --pairs | --mate-pairs | --interleaved | --single) _velk_files '*.@(fq|fastq|fa|fasta|bam)?(.*)' ;;
    --samplesheet) _velk_files '*.@(tsv|txt)' ;;
    --library) _velk_files '*.@(lib|txt)' ;;
    --agp) _velk_files '*.agp' ;;
    --plan) _velk_files '*.json' ;;
    --index | --check) _velk_files '*.vix' ;;
    --inputs-root) _velk_files '/' ;;
    -o | --output) _velk_files '*' ;;
    -t | --threads) _velk_words "$(seq "$(nproc 2>/dev/null || echo 1)")" ;;
    --placeholder) _velk_words "100 200 500 1000" ;;
    --sample | -[kLCMOr] | --kmer | --min-* | --cut | --read-length | --flanks) COMPREPLY=() ;;
    *) return 1 ;;
  esac
}

# The options of velk-run or of its verb $1.
_velk_run_options() {
  local search="--pairs --mate-pairs --interleaved --single --samplesheet --library --placeholder
    --agp --index --sample --no-anchors --no-report --native --force -k --kmer -L --min-contig -C --cut
    -M --min-identity -O --min-overlap -r --read-length"
  local common="-o --output --quiet -t --threads -h --help"
  case $1 in
    extract) _velk_words "--fasta --bam --flanks --pairs-only --singles-only
      -o --output -h --help" ;;
    plan) _velk_words "$search --inputs-root $common" ;;
    index) _velk_words "--check --plan --inputs-root --placeholder --agp --force -k --kmer -L --min-contig -C --cut
      -r --read-length $common" ;;
    task) _velk_words "--inputs-root --index --force $common" ;;
    gather) _velk_words "--inputs-root --index $common" ;;
    *) _velk_words "$search --plan --version $common" ;;
  esac
}

_velk_run() {
  local current=${COMP_WORDS[COMP_CWORD]} last=${COMP_WORDS[COMP_CWORD - 1]} verb=
  [[ $COMP_CWORD -eq 1 ]] || verb=${COMP_WORDS[1]}
  if [[ $current == -* ]]; then
    _velk_run_options "$verb"
    return
  fi
  case $verb,$COMP_CWORD in
    task,2 | gather,2) _velk_files '*.json' && return ;;
    extract,* | task,* | gather,*)
      _velk_run_value "$last" || _velk_files '/'
      return
      ;;
  esac
  # The second file of mates, and all files of single reads.
  if [[ $COMP_CWORD -gt 2 && ${COMP_WORDS[COMP_CWORD - 2]} == @(--pairs|--mate-pairs|--single) ]]; then
    _velk_run_value --pairs
    return
  fi
  _velk_run_value "$last" || _velk_files '*.@(fa|fasta|fna|fq|fastq)?(.*)'
}

complete -F _velk velk velk-check
_velk_report() {
  local current=${COMP_WORDS[COMP_CWORD]}
  if [[ $current == -* ]]; then
    _velk_words "--found --gap --text -o --output -h --help --version"
    return
  fi
  case ${COMP_WORDS[COMP_CWORD - 1]} in
    -o | --output) _velk_files '*.@(svg|html)' ;;
    --gap) COMPREPLY=() ;;
    --found) _velk_files '*.@(fa|fasta)' ;;
    *)
      if [[ " ${COMP_WORDS[*]} " == *' --found '* ]]; then
        _velk_files '*.@(fa|fasta|fna)'
      else
        _velk_files '/'
      fi
      ;;
  esac
}

complete -F _velk_run velk-run
complete -F _velk_report velk-report
