#!/usr/bin/env bash
# Fuzzes our own code: fuzz.sh [SECONDS [TARGET...]]. Builds the targets, makes their first inputs, and runs each for
# that long (10 s where nothing is said). What a target finds stays in build/fuzz/findings, and fails the run.
set -euo pipefail
cd "$(dirname "$0")/.."

seconds=${1:-10}
shift || true
build=${FERROW_FUZZ_BUILD:-build/fuzz}
seed=${FERROW_FUZZ_SEED:-1}

if ! command -v clang++ >/dev/null 2>&1 ||
    ! echo 'extern "C" int LLVMFuzzerTestOneInput(const unsigned char*, unsigned long) { return 0; }' |
        clang++ -x c++ -fsanitize=fuzzer,address - -o /dev/null 2>/dev/null; then
    echo "SKIPPED: fuzzing needs clang with its fuzzer (Debian: clang-14, libclang-rt-14-dev). Nothing was fuzzed." >&2
    exit 0
fi

cmake --preset fuzz -B "$build" >/dev/null
cmake --build "$build" --target fuzz-targets MakeSeeds

export QT_LOGGING_RULES='*=false' ASAN_OPTIONS=detect_leaks=1:allocator_may_return_null=1
export LSAN_OPTIONS=suppressions=$PWD/tests/Support/leaks.supp:print_suppressions=0
export UBSAN_OPTIONS=print_stacktrace=1

corpus=$build/corpus
findings=$build/findings
mkdir -p "$corpus" "$findings"
"$build/fuzz/MakeSeeds" "$corpus"

failed=()
if [ $# -eq 0 ]; then
    for source in fuzz/*Fuzz.cpp; do
        set -- "$@" "$(basename "$source" .cpp)"
    done
fi
for target in "$@"; do
    dictionary=fuzz/xmp.dict
    case $target in Header* | Property*) dictionary=fuzz/header.dict ;; esac
    log=$build/$target.log
    if "$build/fuzz/$target" "$corpus/$target" -seed="$seed" -max_total_time="$seconds" -max_len=20000 -timeout=10 \
        -rss_limit_mb=2048 -malloc_limit_mb=1024 -dict="$dictionary" -artifact_prefix="$findings/$target-" \
        -print_final_stats=1 >"$log" 2>&1; then
        runs=$(sed -n 's/^stat::number_of_executed_units: *//p' "$log")
        echo "$target: $runs inputs in $seconds s, nothing found"
    else
        echo "$target: FOUND something; see $log and $findings" >&2
        failed+=("$target")
    fi
done
[ ${#failed[@]} -eq 0 ]
