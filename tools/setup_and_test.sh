#!/usr/bin/env bash
# Installs what is missing, builds, and runs the whole test suite.
set -euo pipefail
cd "$(dirname "$0")/.."
bash tools/install_dependencies.sh --with-openscad
bash tools/build.sh
ctest --test-dir build --output-on-failure -j "$(nproc)"
