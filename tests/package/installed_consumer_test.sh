#!/usr/bin/env bash
# Installs the built library into an empty tree and builds hosts against it: by CMake's package and
# by pkg-config, in C and in C++.
#   installed_consumer_test.sh BUILD_DIR SOURCE_DIR CC CXX FLAGS
set -euo pipefail

build=$1 consumer=$2/tests/package/consumer cc=$3 cxx=$4
read -r -a flags <<<"${5-}"
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

# Only what the library's component tests need: the programs may not be built yet.
for component in library development; do
  cmake --install "$build" --prefix "$work/tree" --component "$component" >/dev/null
done
cd "$work"

run() { LD_LIBRARY_PATH="$libdir" "$@"; }

CC=$cc CXX=$cxx CFLAGS="${flags[*]}" CXXFLAGS="${flags[*]}" cmake -G Ninja -S "$consumer" -B by-cmake \
  -DCMAKE_PREFIX_PATH="$work/tree" >/dev/null
cmake --build by-cmake >/dev/null
libdir=$(dirname "$(find "$work/tree" -name 'libVeskTarvoM5.so.1')")
run by-cmake/consumer_c
run by-cmake/consumer_cpp

pc=$(dirname "$(find "$work/tree" -name VeskTarvoM5.pc)")
query() { PKG_CONFIG_PATH=$pc pkg-config "$@" VeskTarvoM5; }
test "$(query --modversion)" = 1.0.0
read -r -a cflags < <(query --cflags)
read -r -a libs < <(query --libs)
"$cc" "${flags[@]}" -std=c11 -Wall -Wextra -Wpedantic -Werror "${cflags[@]}" \
  "$consumer/consumer.c" "${libs[@]}" -o by_pkg_config_c
"$cxx" "${flags[@]}" -std=c++17 -Wall -Wextra -Wpedantic -Werror "${cflags[@]}" \
  "$consumer/consumer.cpp" "${libs[@]}" -o by_pkg_config_cpp
run ./by_pkg_config_c
run ./by_pkg_config_cpp
