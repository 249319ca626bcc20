#!/usr/bin/env bash
# Checks how the sources are written: their layout, by clang-format, braces that are not needed, and the spelling of
# casts.
set -euo pipefail
cd "$(dirname "$0")/.."

# Versions differ in how they lay out; this is the one that the sources are held to.
format=clang-format-14
mapfile -d '' sources < <(git ls-files -z --cached --others --exclude-standard '*.h' '*.cpp')
if command -v $format >/dev/null 2>&1; then
    $format --dry-run -Werror "${sources[@]}"
    # What takes braces away also breaks lines before lambdas, so that it judges the braces alone.
    style=$(mktemp)
    trap 'rm -f "$style"' EXIT
    { cat .clang-format && echo 'RemoveBracesLLVM: true'; } >"$style"
    braced=()
    for source in "${sources[@]}"; do
        cmp -s <($format --style=file:"$style" "$source" | tr -d '[:space:]') <(tr -d '[:space:]' <"$source") ||
            braced+=("$source")
    done
    if [ ${#braced[@]} -gt 0 ]; then
        printf '%s: a body of one statement goes without braces\n' "${braced[@]}" >&2
        exit 1
    fi
else
    echo "SKIPPED: the layout is checked by $format, which is not here." >&2
fi

numbers='(std::)?(u?int(8|16|32|64|max|ptr)_t|size_t|ptrdiff_t)|q?u?int(8|16|32|64)|int|qsizetype|qreal|unsigned|long|short|char|bool|float|double|off_t|ssize_t'
if grep -nE "static_cast<($numbers)>\(" "${sources[@]}"; then
    echo "A number of a type that is one word is written as a call: int(value)." >&2
    exit 1
fi
