#!/usr/bin/env bash
# Checks that no file of the tree is one that a tool left behind: patch, merge tools, editors,
# compilers, file managers; and none below the root hidden. Usage: leftovers.sh ROOT
set -euo pipefail
root=$1
ending='\.(orig|rej|bak|old|tmp|swp|swo|save|pyc|o|gcda|gcno|log)|~|_(BACKUP|BASE|LOCAL|REMOTE)_[0-9]+(\.\w+)?'
whole_name='\.#.*|#.*#|core(\.[0-9]+)?|\.DS_Store|Thumbs\.db'

# What is committed or would be; without git all that is there.
files() {
  git ls-files --cached --others --exclude-standard 2>/dev/null ||
    find . \( -path ./build -o -name .git -o -name __pycache__ \) -prune -o -type f -printf '%P\n'
}

cd "$root"
listed=$(files)
if grep -E "($ending)\$|(^|/)($whole_name)\$|/\.[^/]*\$" <<<"$listed" >&2; then
  echo "These were left behind." >&2
  exit 1
fi
echo "$(wc -l <<<"$listed") files, none of them left behind"
