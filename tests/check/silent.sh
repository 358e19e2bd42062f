#!/usr/bin/env bash
# Stands in for velk-check in the check of its own tests: it never finds anything.
# Usage: silent.sh ARGUMENT...
set -euo pipefail
for argument in "$@"; do
  if [[ $argument == --json ]]; then echo '{"status": 0, "findings": []}'; fi
done
