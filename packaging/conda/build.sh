#!/usr/bin/env bash
# conda-build runs this in the source tree, with the prefix, compilers and flags in the environment.
set -euo pipefail
# shellcheck disable=SC2154,SC2086  # PREFIX and CMAKE_ARGS are conda-build's, the latter a list
cmake -S . -B build/conda -G Ninja ${CMAKE_ARGS-} -DCMAKE_BUILD_TYPE=Release -DVELK_TESTS=OFF \
  -DCMAKE_INSTALL_PREFIX="$PREFIX"
cmake --build build/conda
cmake --install build/conda
