#!/usr/bin/env bash
# Installs what is missing, checks the formatting, builds (warnings as errors, no benchmarks) and
# runs the whole test suite: once on the Release build, and once more under AddressSanitizer and
# UndefinedBehaviorSanitizer in build-sanitize/, then a short fuzz pass over the readers: 15 s per
# target, two at a time (tools/fuzz.sh takes longer passes).
set -euo pipefail
cd "$(dirname "$0")/.."
bash tools/install_dependencies.sh --for-tests --with-fuzz
bash tools/check_format.sh
bash tools/build.sh -DKELVORIG_BUILD_BENCH=OFF -DKELVORIG_WERROR=ON
ctest --test-dir build --output-on-failure -j "$(nproc)"
launcher=()
if command -v ccache >/dev/null; then
    launcher=(-DCMAKE_CXX_COMPILER_LAUNCHER=ccache)
    # Paths below the checkout, and the build folder, don't count: any clone reuses the cache.
    export CCACHE_BASEDIR="$PWD" CCACHE_NOHASHDIR=1
fi
# note: -O1 with line tables only: the sanitizers' reports keep their places, and the build
# takes about half the time of an optimised one with full debug information.
cmake -S . -B build-sanitize -G Ninja -DCMAKE_BUILD_TYPE=None -DCMAKE_CXX_FLAGS="-O1 -g1" -DKELVORIG_SANITIZE=ON \
    -DKELVORIG_BUILD_BENCH=OFF -DKELVORIG_WERROR=ON "${launcher[@]}" >/dev/null
cmake --build build-sanitize --target kelvorig kelvorig_tests
ctest --test-dir build-sanitize --output-on-failure -j "$(nproc)"
if command -v clang++ >/dev/null; then
    bash tools/fuzz.sh 15 2
fi
