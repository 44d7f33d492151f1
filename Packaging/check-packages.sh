#!/usr/bin/env bash
# Makes the Debian packages from a build folder and looks into them: check-packages.sh BUILD
set -euo pipefail
build=$(realpath "$1")
scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT
cd "$build"
cpack -G DEB -B "$scratch" >"$scratch/log" 2>&1 || { tail -20 "$scratch/log"; exit 1; }
failed=0
fail() { echo "FAIL: $*"; failed=1; }

# holds <package> <path>...: the package has these files.
holds() {
  local package=$1 list
  shift
  list=$(dpkg-deb -c "$scratch/${package}_"*.deb)
  for path in "$@"; do grep -q " \./usr/$path" <<<"$list" || fail "$package has no $path"; done
  dpkg-deb -x "$scratch/${package}_"*.deb "$scratch/root"
}
holds librzcrypto1 'lib/.*librz.crypto.so.1' 'lib/.*librz.log.so.1' 'lib/.*librz.cext.so.1'
holds librzcrypto-dev include/tavo/crypto.h include/rz/log.h 'lib/.*librz.crypto.so ' 'lib/.*pkgconfig/rzcrypto.pc' \
  'lib/.*cmake/rzcrypto/rzcryptoConfig.cmake'
holds rzcrypto bin/rzcrypto share/man/man1/rzcrypto.1 share/bash-completion/completions/rzcrypto

depends=$(dpkg-deb -f "$scratch"/librzcrypto1_*.deb Depends)
grep -q 'libssl3' <<<"$depends" || fail "librzcrypto1 does not depend on libssl3: $depends"
depends=$(dpkg-deb -f "$scratch"/rzcrypto_*.deb Depends)
grep -q 'librzcrypto1' <<<"$depends" || fail "rzcrypto does not depend on librzcrypto1: $depends"

library=$(dirname "$(find "$scratch/root" -name librz.crypto.so.1)")
LD_LIBRARY_PATH="$library" "$scratch/root/usr/bin/rzcrypto" digest </dev/null | grep -q '^e3b0c442' || fail "the packaged tool does not run"
[ $failed = 0 ] && ls "$scratch"/*.deb | xargs -n1 basename
exit $failed
