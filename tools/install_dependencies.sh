#!/usr/bin/env bash
# Installs the Debian 12 packages kelvorig builds, tests and benchmarks with (run as root).
# --for-tests (or its older name --with-openscad) adds what only the test suite uses: OpenSCAD,
# Chromium to open the HTML report, and clang-format to check the formatting.
set -euo pipefail
packages=(cmake ninja-build ccache g++ pkg-config libembree-dev libeigen3-dev libjsoncpp-dev libqhull-dev libgtest-dev libbenchmark-dev
          libcairo2-dev libjs-three)
for option in "$@"; do
    case "$option" in
        --for-tests | --with-openscad) packages+=(openscad chromium clang-format) ;;  # clang-format: tools/check_format.sh
        --with-fuzz) packages+=(clang libfuzzer-14-dev) ;;  # tools/fuzz.sh
    esac
done
missing=()
for package in "${packages[@]}"; do
    dpkg -s "$package" >/dev/null 2>&1 || missing+=("$package")
done
if [ ${#missing[@]} -gt 0 ]; then
    export DEBIAN_FRONTEND=noninteractive
    apt-get update -qq
    apt-get install -y -qq --no-install-recommends "${missing[@]}"
fi
