#!/usr/bin/env bash
# Configures and builds kelvorig, its tests and benchmarks into build/ (Ninja, and ccache where
# installed). Extra arguments go to CMake, e.g. -DKELVORIG_BUILD_BENCH=OFF -DKELVORIG_WERROR=ON.
set -euo pipefail
cd "$(dirname "$0")/.."
launcher=()
if command -v ccache >/dev/null; then
    launcher=(-DCMAKE_CXX_COMPILER_LAUNCHER=ccache)
    # Paths below the checkout, and the build folder, don't count: any clone reuses the cache.
    export CCACHE_BASEDIR="$PWD" CCACHE_NOHASHDIR=1
fi
cmake -S . -B build -G Ninja -DCMAKE_BUILD_TYPE=Release "${launcher[@]}" "$@" >/dev/null
cmake --build build
