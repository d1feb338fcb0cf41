#!/usr/bin/env bash
# Prints how many lines of C++ there are, blank lines and comments left out: code, tests, and their ratio.
source "$(dirname "${BASH_SOURCE[0]}")/common.sh"

count() { # FOLDER...: lines in the C++ files that git knows below these folders
    git ls-files -z --cached --others --exclude-standard -- "${@/%//*.cpp}" "${@/%//*.h}" | xargs -0 -r cat | awk '
        in_comment { if (!sub(/^.*\*\//, "")) next; in_comment = 0 }
        { gsub(/\/\*([^*]|\*+[^*\/])*\*+\//, ""); sub(/\/\/.*/, "") }
        sub(/\/\*.*/, "") { in_comment = 1 }
        /[^[:space:]]/ { lines++ }
        END { print lines + 0 }'
}

code=$(count include model interp io formats selection tools draw apps examples scripts)
tests=$(count tests)
others=$(count bench fuzz)
printf 'code            %7d  (library, apps, examples, scripts)\n' "$code"
printf 'tests           %7d\n' "$tests"
printf 'tests / code    %7s\n' "$(awk -v c="$code" -v t="$tests" 'BEGIN { printf "%.2f", c ? t / c : 0 }')"
printf 'bench and fuzz  %7d\n' "$others"
