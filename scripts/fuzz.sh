#!/usr/bin/env bash
# Fuzzes our own code: fuzz.sh [RUNS [TARGET...]]. Builds the targets, makes their first inputs, and gives each target that
# many inputs. They follow from the seed alone, so that a run can be repeated. What a target finds stays in
# build/fuzz/findings, and fails the run.
set -euo pipefail
cd "$(dirname "$0")/.."

runs=${1:-40000}
shift || true
build=${FERROW_FUZZ_BUILD:-build/fuzz}
seed=${FERROW_FUZZ_SEED:-1}

if ! command -v clang++ >/dev/null 2>&1 ||
    ! echo 'extern "C" int LLVMFuzzerTestOneInput(const unsigned char*, unsigned long) { return 0; }' |
        clang++ -x c++ -fsanitize=fuzzer,address - -o /dev/null 2>/dev/null; then
    echo "SKIPPED: fuzzing needs clang with its fuzzer (Debian: clang, libclang-rt-dev). Nothing was fuzzed." >&2
    exit 0
fi

cmake --preset fuzz -B "$build" >/dev/null
cmake --build "$build" --target fuzz-targets MakeSeeds

export QT_LOGGING_RULES='*=false' ASAN_OPTIONS=detect_leaks=1:allocator_may_return_null=1
export LSAN_OPTIONS=suppressions=$PWD/tests/Support/leaks.supp:print_suppressions=0
export UBSAN_OPTIONS=print_stacktrace=1

seeds=$build/seeds
findings=$build/findings
scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT
rm -rf "$seeds"
mkdir -p "$seeds" "$findings"
"$build/fuzz/MakeSeeds" "$seeds"

# Where the system lets it: some libraries decide by addresses, and one input leads to the next.
fixed=()
! setarch -R true 2>/dev/null || fixed=(setarch -R)
failed=()
if [ $# -eq 0 ]; then
    for source in fuzz/*Fuzz.cpp; do
        set -- "$@" "$(basename "$source" .cpp)"
    done
fi
for target in "$@"; do
    dictionary=fuzz/xmp.dict
    case $target in Header* | Jpeg* | Property*) dictionary=fuzz/header.dict ;; esac
    log=$build/$target.log
    mkdir "$scratch/$target"
    start=$SECONDS
    if "${fixed[@]}" "$build/fuzz/$target" "$scratch/$target" "$seeds/$target" -seed="$seed" -runs="$runs" -reload=0 -max_len=20000 \
        -timeout=10 -rss_limit_mb=2048 -malloc_limit_mb=1024 -dict="$dictionary" \
        -artifact_prefix="$findings/$target-" >"$log" 2>&1; then
        echo "$target: $runs inputs in $((SECONDS - start)) s, nothing found"
    else
        echo "$target: FOUND something; see $log and $findings" >&2
        failed+=("$target")
    fi
done
[ ${#failed[@]} -eq 0 ]
