#!/usr/bin/env bash
# Builds and installs the library in the other ways that users choose: static, into absolute
# directories, and as a part of a project that does not want it installed.
#
#   check_variants.sh LIBRARY_DIR SOURCE_DIR COMPILER
set -eu
library=$1 source=$2
export CXX=$3 CMAKE_GENERATOR=Ninja
# shellcheck source=tests/install/expect.sh
. "$source/expect.sh"

work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

# The static library, outside of the prefix.
cmake -S "$library" -B "$work/static" -DBUILD_SHARED_LIBS=OFF -DCMAKE_BUILD_TYPE=Debug \
  -DVOR_BUILD_TESTS=OFF -DVOR_BUILD_EXAMPLES=OFF -DCMAKE_INSTALL_PREFIX="$work/prefix" \
  -DCMAKE_INSTALL_LIBDIR="$work/fixed/lib" -DCMAKE_INSTALL_INCLUDEDIR="$work/fixed/headers" >/dev/null
cmake --build "$work/static" >/dev/null
cmake --install "$work/static" >/dev/null
expect "shared libraries" "$(find "$work" -name '*.so*' | wc -l)" "0"

export PKG_CONFIG_PATH=$work/fixed/lib/pkgconfig
expect "libdir" "$(pkg-config --variable=libdir VorToolsInfrastructure)" "$work/fixed/lib"
expect "prefix" "$(pkg-config --variable=prefix VorToolsInfrastructure)" "$work/prefix"
# shellcheck disable=SC2046  # flags are words of their own
"$CXX" -std=c++20 $(pkg-config --cflags VorToolsInfrastructure) "$source/consumer/main.cpp" \
  -o "$work/plain" $(pkg-config --static --libs VorToolsInfrastructure)
expect "static pkg-config" "$("$work/plain")" "/a/c matches"

cmake -S "$source/consumer" -B "$work/cmake" -DCMAKE_PREFIX_PATH="$work/fixed" >/dev/null
cmake --build "$work/cmake" >/dev/null
expect "static find_package" "$("$work/cmake/consumer")" "/a/c matches"

# Below a parent project: nothing of the library is installed unless VOR_INSTALL says so.
cmake -S "$source/parent" -B "$work/parent" -DLIBRARY="$library" >/dev/null
expect "install rules" "$(grep -c Vor "$work/parent/library/cmake_install.cmake" || true)" "0"
cmake -S "$source/parent" -B "$work/parent" -DVOR_INSTALL=ON >/dev/null
expect "package" "$(grep -c VorToolsInfrastructureConfig.cmake \
  "$work/parent/library/cmake_install.cmake" | sed 's/[1-9].*/some/')" "some"
