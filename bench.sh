#!/usr/bin/env bash
# Builds and runs the benchmarks: bench.sh [name ...], all of them without a name. Writes bench/results/<name>.json and
# prints the medians. Runs are interleaved, so that a machine whose speed drifts does not favour one side.
set -euo pipefail
cd "$(dirname "$0")"

cmake --preset release -DVRK_BUILD_VIEWER=ON >/dev/null
names=("$@")
if [ ${#names[@]} -eq 0 ]; then
    for source in bench/*_bench.cpp; do names+=("$(basename "$source" .cpp)"); done
fi
cmake --build --preset release --target "${names[@]}" >/dev/null
mkdir -p bench/results
for name in "${names[@]}"; do
    echo "== $name"
    run=()
    [ -n "${DISPLAY:-}" ] || run=(xvfb-run -a)
    "${run[@]}" "build/release/bin/$name" --benchmark_repetitions=5 --benchmark_report_aggregates_only=true \
        --benchmark_enable_random_interleaving=true --benchmark_out="bench/results/$name.json" \
        --benchmark_out_format=json 2>&1 | grep -E '_median|^Benchmark' || true
done
