#!/usr/bin/env bash
# Formats all C++ files that git knows; with --check it changes nothing and fails where a file is not formatted.
source "$(dirname "${BASH_SOURCE[0]}")/common.sh"

need "git|git" "clang-format|clang-format"

mode=(-i)
if [ "${1-}" = --check ]; then mode=(--dry-run -Werror); fi
git ls-files -z --cached --others --exclude-standard -- '*.cpp' '*.h' | xargs -0 -r -n 20 -P 2 clang-format "${mode[@]}"
