#!/usr/bin/env bash
# Installs the built library into an empty directory and builds a stranger's program against it,
# once with CMake's find_package and once with pkg-config; then looks at what the library exports
# and starts the installed tool.
#
#   check_install.sh BUILD_DIR SOURCE_DIR COMPILER CXX_FLAGS
set -eu
build=$1 source=$2 compiler=$3 flags=$4
# shellcheck source=tests/install/expect.sh
. "$source/expect.sh"

work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
prefix=$work/prefix
cmake --install "$build" --prefix "$prefix" >/dev/null
library=$(find "$prefix" -name 'libVorToolsInfrastructure.so')
libdir=$(dirname "$library")

cmake -S "$source/consumer" -B "$work/cmake" -G Ninja -DCMAKE_PREFIX_PATH="$prefix" \
  -DCMAKE_CXX_COMPILER="$compiler" -DCMAKE_CXX_FLAGS="$flags" >/dev/null
cmake --build "$work/cmake" >/dev/null
expect "find_package" "$("$work/cmake/consumer")" "/a/c matches"

export PKG_CONFIG_PATH=$libdir/pkgconfig
version=$(pkg-config --modversion VorToolsInfrastructure)
# shellcheck disable=SC2046,SC2086  # flags are words of their own
"$compiler" -std=c++20 $flags -I"$source/consumer" $(pkg-config --cflags VorToolsInfrastructure) \
  "$source/consumer/main.cpp" -o "$work/plain" \
  $(pkg-config --libs VorToolsInfrastructure) -Wl,-rpath,"$libdir"
expect "pkg-config" "$("$work/plain")" "/a/c matches"

expect "soname" "$(readelf -d "$library" | sed -n 's/.*SONAME.*\[\(.*\)\]/\1/p')" \
  "libVorToolsInfrastructure.so.1"
# What the private namespace holds stays inside.
expect "private symbols" "$(nm -DC --defined-only "$library" | grep -cE '^[^ ]* . (.* for )?vor::' || true)" "0"

if [ -e "$prefix/bin/campaign" ]; then
  mv "$prefix" "$work/moved"
  expect "installed tool" "$("$work/moved/bin/campaign" --version)" "campaign $version"
fi
