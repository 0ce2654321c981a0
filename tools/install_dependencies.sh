#!/usr/bin/env bash
# Installs the Debian 12 packages kelvorig builds, tests and benchmarks with (run as root).
set -euo pipefail
packages=(cmake make g++ pkg-config libembree-dev libeigen3-dev libjsoncpp-dev libqhull-dev libgtest-dev libbenchmark-dev)
for option in "$@"; do
    case "$option" in
        --with-openscad) packages+=(openscad) ;;
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
