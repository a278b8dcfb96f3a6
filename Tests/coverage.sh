#!/usr/bin/env bash
# Sums up line coverage by directory from a build with the coverage preset. Usage: Tests/coverage.sh BUILD_DIRECTORY
set -eu
cd "$(dirname "$(readlink -f "$0")")/.."
build=$(readlink -f "$1")
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
cd "$work"
find "$build" -name '*.gcda' -not -path '*/Tests/*' -print0 | xargs -0 -r gcov -r -s "$OLDPWD" >gcov.txt 2>/dev/null
awk -v root="$OLDPWD/" '
    /^File / {split($0, parts, "\x27"); file = parts[2]; sub(root, "", file)}
    /^Lines executed:/ && file != "" {
        split($0, numbers, /[:% ]+/); percent = numbers[3]; lines = $NF
        directory = file; sub("/[^/]*$", "", directory)
        if (directory !~ /^(Tests|build)/ && directory !~ /^\//) {all[directory] += lines; hit[directory] += lines * percent / 100}
        file = ""
    }
    END {for (directory in all) printf "%6.1f %% of %5d lines  %s\n", 100 * hit[directory] / all[directory], all[directory], directory}
' gcov.txt | sort -k6
