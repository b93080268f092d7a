#!/usr/bin/env bash
# Fuzzing campaigns with libFuzzer (clang, ASan + UBSan), in the build folder build-fuzz.
#   tests/fuzz/run.sh TARGET SECONDS        fuzz TARGET for SECONDS, starting from its corpus
#   tests/fuzz/run.sh --merge TARGET SEEDS  minimise SEEDS (and the corpus) into the corpus
# Targets: the names in tests/fuzz/CMakeLists.txt (spectrum, spc, jcamp, ...). New inputs go to
# build-fuzz/campaign/TARGET (never into the committed corpus); crashes to
# build-fuzz/findings/TARGET. Needs clang and libFuzzer: QUARVEX_FUZZ=ON ./setup.sh installs them.
#   QUARVEX_FUZZ_TIMEOUT  seconds one input may take (default 10); raise it for a campaign that
#                         shares the machine, where a starved input is not a hang
#   QUARVEX_FUZZ_RUNS     stop after this many executions (default 10,000,000)
set -euo pipefail

root=$(cd "$(dirname "${BASH_SOURCE[0]}")/../.." && pwd)
build=${QUARVEX_FUZZ_BUILD_DIR:-$root/build-fuzz}

merge=false
if [[ ${1:-} == --merge ]]; then
    merge=true
    shift
fi
target=${1:?target}
second=${2:?seconds or seeds}

cmake -S "$root" -B "$build" -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo \
    -DCMAKE_CXX_COMPILER=clang++ -DQUARVEX_FUZZ=ON -DQUARVEX_BUILD_GUI=OFF >/dev/null
cmake --build "$build" --target "quarvex_fuzz_$target"

fuzzer=$build/tests/fuzz/quarvex_fuzz_$target
corpus=$root/tests/fuzz/corpus/$target
export ASAN_OPTIONS=detect_leaks=1:abort_on_error=1
export UBSAN_OPTIONS=print_stacktrace=1:halt_on_error=1

if $merge; then
    merged=$(mktemp -d)
    mkdir -p "$corpus"
    "$fuzzer" -merge=1 "$merged" "$corpus" "$second"
    rm -f "$corpus"/*
    cp "$merged"/* "$corpus"/
    rm -rf "$merged"
    exit 0
fi

campaign=$build/campaign/$target
findings=$build/findings/$target
mkdir -p "$campaign" "$findings"
exec "$fuzzer" -max_total_time="$second" -runs="${QUARVEX_FUZZ_RUNS:-10000000}" -max_len=65536 \
    -timeout="${QUARVEX_FUZZ_TIMEOUT:-10}" -rss_limit_mb=2048 \
    -print_final_stats=1 -artifact_prefix="$findings/" "$campaign" "$corpus"
