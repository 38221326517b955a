#!/usr/bin/env bash
# Installs the built library into an empty tree and builds hosts against it: by CMake's package and
# by pkg-config, in C and in C++; without the companion, and with it where it was built.
#   installed_consumer_test.sh BUILD_DIR SOURCE_DIR CC CXX FLAGS [SQLITE_DIR]
set -euo pipefail

build=$1 consumer=$2/tests/package/consumer cc=$3 cxx=$4 sqlite=${6-}
read -r -a flags <<<"${5-}"
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
warnings=(-Wall -Wextra -Wpedantic -Werror)

# Only what the component tests need: the programs may not be built yet.
install_components() {
  local component
  for component; do
    cmake --install "$build" --prefix "$work/tree" --component "$component" >/dev/null
  done
}
# The database may stand where only this project looks for it.
run() { LD_LIBRARY_PATH="$libdir${sqlite:+:$sqlite}" "$@"; }
build_by_cmake() {
  local folder=$1
  shift
  CC=$cc CXX=$cxx CFLAGS="${flags[*]}" CXXFLAGS="${flags[*]}" cmake -G Ninja -S "$consumer" \
    -B "$folder" -DCMAKE_PREFIX_PATH="$work/tree" "$@" >/dev/null
  cmake --build "$folder" >/dev/null
}
query() { PKG_CONFIG_PATH=$libdir/pkgconfig pkg-config "$@"; }
# build_by_pkg_config PACKAGE COMPILER STANDARD SOURCE OPTION...
build_by_pkg_config() {
  local package=$1 compiler=$2 standard=$3 source=$4 cflags libs
  shift 4
  test "$(query --modversion "$package")" = 1.0.0
  read -r -a cflags < <(query --cflags "$package")
  read -r -a libs < <(query --libs "$package")
  "$compiler" "${flags[@]}" "-std=$standard" "${warnings[@]}" "${cflags[@]}" "$consumer/$source" \
    "${libs[@]}" "$@" -o by_pkg_config
  run ./by_pkg_config
}

install_components library development
cd "$work"
libdir=$(dirname "$(find "$work/tree" -name 'libVeskTarvoM5.so.1')")
build_by_cmake by-cmake
run by-cmake/consumer_c
run by-cmake/consumer_cpp
build_by_pkg_config VeskTarvoM5 "$cc" c11 consumer.c
build_by_pkg_config VeskTarvoM5 "$cxx" c++17 consumer.cpp

if [ -n "$sqlite" ]; then
  install_components companion
  build_by_cmake with-companion -DWITH_COMPANION=ON \
    "-DCMAKE_EXE_LINKER_FLAGS=-Wl,-rpath-link,$sqlite"
  run with-companion/consumer_companion
  rm consumer.journal*
  build_by_pkg_config kkmcheck "$cc" c11 companion.c "-Wl,-rpath-link,$sqlite"
fi
