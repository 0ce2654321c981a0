#!/usr/bin/env bash
# Builds the libFuzzer targets of the readers (fuzz/) with clang in build-fuzz/, writes their seed
# corpus, and runs each target for the given number of seconds, a few at a time at the lowest
# priority, under AddressSanitizer and UndefinedBehaviorSanitizer. What a run learns stays in
# build-fuzz/corpus/<target> for the next one; a finding is saved in build-fuzz/artifacts/ and
# fails the script.
# usage: tools/fuzz.sh [seconds per target, default 60] [targets at once, default 2]
set -euo pipefail
cd "$(dirname "$0")/.."
export seconds=${1:-60}
jobs=${2:-2}
targets=(stl_reader model_file device_config imu_description layout_checks mesh_checks command_line)

launcher=()
if command -v ccache >/dev/null; then
    launcher=(-DCMAKE_CXX_COMPILER_LAUNCHER=ccache)
    # Paths below the checkout, and the build folder, don't count: any clone reuses the cache.
    export CCACHE_BASEDIR="$PWD" CCACHE_NOHASHDIR=1
fi
# note: Debug keeps Eigen's own bounds assertions; the targets add -O1 themselves.
cmake -S . -B build-fuzz -DKELVORIG_FUZZ=ON -DCMAKE_CXX_COMPILER=clang++ -DCMAKE_BUILD_TYPE=Debug "${launcher[@]}" >/dev/null
cmake --build build-fuzz -j "$(nproc)"

export seeds=build-fuzz/seeds
rm -rf "$seeds"
build-fuzz/fuzz/make_seed_corpus "$seeds" examples/example_sensors.json
mkdir -p build-fuzz/logs build-fuzz/artifacts

run_target() {
    local target=$1
    local log=build-fuzz/logs/$target.log
    mkdir -p "build-fuzz/corpus/$target"
    # The readers print a message for every bad input: their output is closed (-close_fd_mask),
    # libFuzzer's own and the sanitizers' reports still come through.
    if nice -n 19 "build-fuzz/fuzz/${target}_fuzz" -max_total_time="$seconds" -timeout=10 -close_fd_mask=3 \
        -print_final_stats=1 -artifact_prefix="build-fuzz/artifacts/$target-" \
        "build-fuzz/corpus/$target" "$seeds/$target" >"$log" 2>&1; then
        echo "$target: $(grep -E '^#[0-9]+' "$log" | tail -1)"
    else
        echo "$target: FINDING, see $log"
        tail -n 40 "$log"
        return 1
    fi
}
export -f run_target
printf '%s\n' "${targets[@]}" | xargs -P "$jobs" -I{} bash -c 'run_target {}'
