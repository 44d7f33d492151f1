#!/usr/bin/env bash
# Installs the Debian packages that are still missing, as root or with sudo: install-packages.sh GROUP...
# Groups: build (library and tool), test (their tests), ci (sanitizers, fuzzing, lint, packages).
set -euo pipefail

build="g++ cmake ninja-build pkg-config libssl-dev libcli11-dev nlohmann-json3-dev ccache"
test="libgtest-dev libgmock-dev libbenchmark-dev python3 python3-pytest openssl valgrind binutils"
ci="git clang clang-tidy clang-format libclang-rt-dev dpkg-dev file"

missing=()
for group in "$@"; do
  for package in ${!group}; do
    dpkg-query -W -f '${Status}' "$package" 2>/dev/null | grep -q 'ok installed' || missing+=("$package")
  done
done
[ ${#missing[@]} -gt 0 ] || exit 0

as_root=()
if [ "$(id -u)" != 0 ]; then
  command -v sudo >/dev/null || { echo "Run as root, or install sudo; missing: ${missing[*]}" >&2; exit 1; }
  as_root=(sudo)
fi
echo "Installing: ${missing[*]}"
"${as_root[@]}" apt-get update -qq
"${as_root[@]}" env DEBIAN_FRONTEND=noninteractive apt-get install -y -qq --no-install-recommends "${missing[@]}" >/dev/null
