#!/usr/bin/env bash
# Install what is needed, build the library and the tool, and run the main job on real input.
set -euo pipefail
cd "$(dirname "$0")"

Packaging/install-packages.sh build
cmake --preset release -DRZ_TESTS=OFF -DRZ_BENCHMARKS=OFF >/dev/null
cmake --build --preset release

tool=build/release/Tools/rzcrypto/rzcrypto
show() {
  printf '\n$ rzcrypto %s\n' "$*"
  "$tool" "$@" || printf '(exit code %d)\n' $?
}

echo
echo "== Which of these certificates log on with a smart card, why not, and which would be taken? =="
show cert logon Examples/certificates
show cert rank Examples/certificates

echo
echo "== Hashes of files, as sha256sum -c reads them back =="
show digest README.md Examples/hello.txt

echo
echo "== The trace of one call =="
printf '\n$ rzcrypto --trace digest < Examples/hello.txt\n'
"$tool" --trace digest < Examples/hello.txt 2>&1 | sed -E 's/^[^ ]+ [0-9/]+ CRYPTO //' | grep -v 'CAlgorithm::Clone'

printf '\nThe tool: %s --help   The library: README.md   Every test: ./test.sh\n' "$tool"
