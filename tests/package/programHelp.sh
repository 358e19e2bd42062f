# shellcheck shell=bash
# Sourced by the tests of completion: what the programs themselves say.

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
