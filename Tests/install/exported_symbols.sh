#!/usr/bin/env bash
# What the shared libraries export, need and how they are linked.
set -euo pipefail
libraries="$BUILD/Sources"
failed=0
fail() { echo "FAIL: $*"; failed=1; }

# exported <module> <pattern>: every exported symbol, demangled, matches the pattern.
exported() {
  local file="$libraries/lib$1.so" symbols
  symbols=$(nm -DC --defined-only "$file" | cut -d' ' -f3- | grep -v '^RZ[A-Z]*_1$' | sed -E 's/@@?RZ[A-Z]+_1$//')
  [ -n "$symbols" ] || fail "$1 exports nothing"
  local stray
  stray=$(grep -vE "$2" <<<"$symbols" || true)
  [ -z "$stray" ] || fail "$1 exports what it should not:"$'\n'"$stray"
}
framework='^((typeinfo( name)?|vtable) for )?Tavo::Framework::'
exported rz.log '^rzlog'
exported rz.cext "$framework"
exported rz.crypto "$framework|^CS[A-Z]|^((typeinfo( name)?|vtable) for )?(BERTLVBuffer|CGctlvException)"

# The implementations stay inside.
inside=$(nm -DC --defined-only "$libraries/librz.crypto.so" | grep -E 'COpenssl|CMLock|CMACCMAC|Padding::(RsaOaep|CX|CPK|COA)|CAsner|CGeneralName' || true)
[ -z "$inside" ] || fail "implementation classes are exported:"$'\n'"$inside"

# A symbol of each kind that callers link against.
offered=$(nm -DC --defined-only "$libraries/librz.crypto.so")
for symbol in 'Tavo::Framework::MessageDigest::Create' 'typeinfo for Tavo::Framework::CCryptoException' \
  'vtable for Tavo::Framework::CAlgorithm'; do
  grep -qF "$symbol" <<<"$offered" || fail "rz.crypto does not export $symbol"
done

# The reference of the DER library lists each of its functions, and nothing else.
listed=$(grep -oE '`CS[A-Za-z0-9]+_[A-Za-z0-9_]+`' "$SOURCE/Docs/der.md" | tr -d '`' | sort -u)
functions=$(grep -oE '\bCS[A-Za-z0-9]+_[A-Za-z0-9_]+' <<<"$offered" | sort -u)
[ "$listed" = "$functions" ] ||
  fail "Docs/der.md and the library disagree:"$'\n'"$(diff <(echo "$listed") <(echo "$functions"))"

for module in rz.log rz.cext rz.crypto; do
  dynamic=$(readelf -dW "$libraries/lib$module.so")
  grep -q "SONAME.*\[lib$module.so.1\]" <<<"$dynamic" || fail "$module: SONAME"
  grep -q 'BIND_NOW\|FLAGS.*NOW' <<<"$dynamic" || fail "$module: not bound at load"
  program=$(readelf -lW "$libraries/lib$module.so")
  grep -q 'GNU_RELRO' <<<"$program" || fail "$module: no RELRO"
  if grep -q 'GNU_STACK.*RWE' <<<"$program"; then fail "$module: executable stack"; fi
  case $module in
    rz.crypto) grep -q 'NEEDED.*libcrypto' <<<"$dynamic" || fail "rz.crypto does not need libcrypto" ;;
    *) if grep -q 'NEEDED.*libcrypto' <<<"$dynamic"; then fail "$module needs libcrypto"; fi ;;
  esac
done
exit $failed
