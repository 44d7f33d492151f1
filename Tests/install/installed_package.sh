#!/usr/bin/env bash
# Install to a scratch prefix, build each example against it with CMake and with pkg-config, and run both.
set -euo pipefail
scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT
prefix="$scratch/prefix"
cmake --install "$BUILD" --prefix "$prefix" >/dev/null
library=$(dirname "$(find "$prefix" -name 'librz.crypto.so.1')")
cp -r "$SOURCE/Examples" "$scratch/Examples"
cmake -G Ninja -S "$scratch/Examples" -B "$scratch/build" -DCMAKE_PREFIX_PATH="$prefix" -DCMAKE_CXX_COMPILER="$CXX" >/dev/null
cmake --build "$scratch/build" >/dev/null

export PKG_CONFIG_PATH="$library/pkgconfig"
read -ra flags <<<"$("$PKG_CONFIG" --cflags --libs rzcrypto)"
count=0
for source in "$scratch"/Examples/*.cpp; do
  name=$(basename "$source" .cpp)
  "$CXX" -std=c++17 -Wall -Wextra -Werror "$source" -o "$scratch/$name" "${flags[@]}" -Wl,-rpath,"$library"
  by_pkg_config=$("$scratch/$name" "$SOURCE/Examples/hello.txt")
  by_cmake=$("$scratch/build/$name" "$SOURCE/Examples/hello.txt")
  [ -n "$by_cmake" ] && [ "$by_cmake" = "$by_pkg_config" ] || { echo "FAIL: $name: '$by_cmake' '$by_pkg_config'"; exit 1; }
  count=$((count + 1))
done
[ "$count" -gt 0 ] || { echo "FAIL: no example"; exit 1; }

expected=$(sha256sum "$SOURCE/Examples/hello.txt" | cut -d' ' -f1)
[ "$("$scratch/hash" "$SOURCE/Examples/hello.txt")" = "$expected" ] || { echo "FAIL: hash is not $expected"; exit 1; }

"$prefix/bin/rzcrypto" --version
for file in share/man/man1/rzcrypto.1 share/bash-completion/completions/rzcrypto include/tavo/crypto.h; do
  [ -s "$prefix/$file" ] || { echo "FAIL: $file is not installed"; exit 1; }
done
