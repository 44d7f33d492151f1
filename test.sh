#!/usr/bin/env bash
# Install what is needed, build everything, run every test.
set -euo pipefail
cd "$(dirname "$0")"

Packaging/install-packages.sh build test
cmake --preset release -DRZ_TESTS=ON -DRZ_BENCHMARKS=ON >/dev/null
cmake --build --preset release
ctest --preset release "$@"
