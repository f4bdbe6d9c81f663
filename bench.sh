#!/usr/bin/env bash
# Builds and runs the benchmarks: bench.sh [name ...], all of them without a name. Writes bench/results/<name>.json and
# prints the medians. Runs are interleaved, so that a machine whose speed drifts does not favour one side. Ends at the first
# program that fails, with its output, its name and its code.
#
# VRK_BENCH_SMALL=1 makes the work tiny, which takes seconds: to see that all of it runs. Its figures say nothing and are
# not written.
set -euo pipefail
cd "$(dirname "$0")"

cmake --preset release -DVRK_BUILD_VIEWER=ON >/dev/null
names=("$@")
if [ ${#names[@]} -eq 0 ]; then
    for source in bench/*_bench.cpp; do names+=("$(basename "$source" .cpp)"); done
fi
log=$(mktemp)
trap 'rm -f "$log"' EXIT
cmake --build --preset release --target "${names[@]}" >"$log" || { cat "$log" >&2; exit 1; }
mkdir -p bench/results
for name in "${names[@]}"; do
    echo "== $name"
    run=()
    [ -n "${DISPLAY:-}" ] || run=(xvfb-run -a)
    results=bench/results/$name.json
    [ -z "${VRK_BENCH_SMALL:-}" ] || results=/dev/null
    code=0
    "${run[@]}" "build/release/bin/$name" --benchmark_repetitions=5 --benchmark_report_aggregates_only=true \
        --benchmark_enable_random_interleaving=true --benchmark_out="$results" --benchmark_out_format=json \
        >"$log" 2>&1 || code=$?
    if [ "$code" -ne 0 ]; then
        cat "$log" >&2
        echo "bench.sh: $name failed with code $code" >&2
        exit "$code"
    fi
    grep -E '_median|^Benchmark' "$log"
done
