#!/usr/bin/env bash
# Installs into an empty prefix and uses the result as a stranger would: the C++ host found by CMake, the C host by
# pkg-config, the program, its man page. Arguments: the build folder, the source folder.
set -euo pipefail
build=$1 source=$2
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
export HOME=$work/home XDG_CONFIG_HOME=$work/home/config XDG_STATE_HOME=$work/home/state
mkdir -p "$HOME"
# The C library loses its copy of LOCPATH in every newlocale, which a leak check would tell.
unset LOCPATH
prefix=$work/prefix

DESTDIR= cmake --install "$build" --prefix "$prefix" >"$work/install.log"
library=$(dirname "$(find "$prefix" -name 'libhy_wristlog.so')")

cmake -S "$source/examples/cpp_host" -B "$work/cpp_host" -DCMAKE_PREFIX_PATH="$prefix" \
  -DCMAKE_CXX_FLAGS="${HOST_FLAGS:-}" >"$work/cmake.log" || { cat "$work/cmake.log"; exit 1; }
cmake --build "$work/cpp_host" >"$work/build.log" 2>&1 || { cat "$work/build.log"; exit 1; }
"$work/cpp_host/cpp_host" vivid | tee "$work/cpp.txt"
grep -q 'Dock Not Connected' "$work/cpp.txt"

export PKG_CONFIG_PATH=$library/pkgconfig
# shellcheck disable=SC2046,SC2086
cc ${HOST_FLAGS:-} -std=c11 -Wall -Wextra -Werror "$source/examples/c_host/main.c" -o "$work/c_host" \
  $(pkg-config --cflags --libs hy_wristlog) "-Wl,-rpath,$library"
"$work/c_host" | tee "$work/c.txt"
grep -q '^  call Retrieve (9 arguments)' "$work/c.txt"

"$prefix/bin/wristlog" --version
manual=$(sed 's/\\-/-/g; s/\\f[BR]//g' "$prefix/share/man/man1/wristlog.1" | grep '^\.B ')
for command in $("$prefix/bin/wristlog" --help | sed -n '/^Subcommands:/,/^$/s/^  \([a-z-]*\) .*/\1/p'); do
  grep -qw -- "$command" <<<"$manual" || { echo "the man page does not know the command $command"; exit 1; }
done
