#!/usr/bin/env bash
# Every public header compiles alone, as C++17 and, where it is C, as C99; and who includes what.
set -euo pipefail
cd "$SOURCE"
failed=0
fail() { echo "FAIL: $*"; failed=1; }

while read -r header; do
  echo "#include \"$header\"" | "$CXX" -std=c++17 -Wall -Wextra -Wpedantic -Werror -fsyntax-only -IInclude -x c++ - ||
    fail "$header does not stand alone"
done < <(cd Include && find . -name '*.h' -printf '%P\n' | sort)

while read -r header; do
  echo "#include \"$header\"" | "$CC" -std=c99 -Wall -Wextra -Werror -fsyntax-only -IInclude -x c - ||
    fail "$header is no C"
done < <(cd Include && ls rz/export.h rz/log.h tavo/der.h tavo/der/*.h 2>/dev/null)

# includes <folder> <pattern>: nothing under the folder includes what matches.
includes() {
  local found
  found=$(grep -rnE --include='*.h' --include='*.cpp' "^ *# *include *[<\"]($2)" "$1" || true)
  [ -z "$found" ] || fail "$1 includes what is above or beside it:"$'\n'"$found"
}
includes Include 'openssl/'
includes Sources/common 'openssl/|\.\./openssl|\.\./asner|rz\.crypto\.linux'
includes Sources/asner 'openssl/|\.\./openssl|rz\.crypto\.linux'
includes Sources/der '(\.\./)?(openssl|common|asner|rz\.|tavo/framework)'
includes Sources/rz.log 'openssl/|tavo/(crypto|owned|der|bertlv)|\.\./'
includes Sources/rz.cext 'openssl/|\.\./'
includes Tools 'openssl/|Sources|(\.\./)+(common|openssl|der|asner)'
includes Examples 'openssl/|Sources|\.\./'
stray=$(grep -nE '^ *# *include *<openssl/' Sources/*.cpp Sources/*.h 2>/dev/null || true)
[ -z "$stray" ] || fail "libcrypto outside Sources/openssl:"$'\n'"$stray"
exit $failed
