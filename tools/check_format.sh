#!/usr/bin/env bash
# Fails, naming the files, when a C++ file of the project differs from what .clang-format makes
# of it. Formatting itself: git ls-files '*.cpp' '*.h' | xargs clang-format -i
set -euo pipefail
cd "$(dirname "$0")/.."
git ls-files '*.cpp' '*.h' | xargs clang-format --dry-run --Werror
