#!/usr/bin/env bash
# Installs what is missing, builds, and runs the whole test suite: once on the Release build, and
# once more under AddressSanitizer and UndefinedBehaviorSanitizer in build-sanitize/ (no
# benchmarks there, to keep the run short), then a short fuzz pass over the readers where clang is
# present: 60 s per target, two at a time.
set -euo pipefail
cd "$(dirname "$0")/.."
bash tools/install_dependencies.sh --with-openscad --with-fuzz
bash tools/build.sh
ctest --test-dir build --output-on-failure -j "$(nproc)"
cmake -S . -B build-sanitize -DCMAKE_BUILD_TYPE=RelWithDebInfo -DKELVORIG_SANITIZE=ON -DKELVORIG_BUILD_BENCH=OFF >/dev/null
cmake --build build-sanitize -j "$(nproc)" --target kelvorig kelvorig_tests
ctest --test-dir build-sanitize --output-on-failure -j "$(nproc)"
if command -v clang++ >/dev/null; then
    bash tools/fuzz.sh 60 2
fi
