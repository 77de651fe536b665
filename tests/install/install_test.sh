#!/usr/bin/env bash
# Uses what was installed as a stranger would: the C++ host found by CMake, the C host by pkg-config, Python, the
# program, its man page. Arguments: the source folder, and what is tried: a build folder, which is installed into an
# empty prefix, or a folder of Debian packages, which are unpacked.
set -euo pipefail
source=$1 tried=$2
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
export HOME=$work/home XDG_CONFIG_HOME=$work/home/config XDG_STATE_HOME=$work/home/state
mkdir -p "$HOME"
# The C library loses its copy of LOCPATH in every newlocale, which a leak check would tell.
unset LOCPATH HY_WRISTLOG_LIBRARY
if [ -f "$tried/CMakeCache.txt" ]; then
  prefix=$work/prefix
  DESTDIR= cmake --install "$tried" --prefix "$prefix" >"$work/install.log"
  python=$source/bindings/python
else
  prefix=$work/root/usr
  for package in "$tried"/*.deb; do dpkg-deb -x "$package" "$work/root"; done
  python=$prefix/lib/python3/dist-packages
fi
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

version=$("$prefix/bin/wristlog" --version)
version=${version#wristlog }
[ "$version" = "$(pkg-config --modversion hy_wristlog)" ]
if [ -z "${HOST_FLAGS:-}" ]; then  # the interpreter has no sanitizers' runtime
  export PYTHONPATH=$python PYTHONDONTWRITEBYTECODE=1
  if [ -e "$prefix/lib/python3" ]; then
    export LD_LIBRARY_PATH=$library
  else
    export HY_WRISTLOG_LIBRARY=$library/libhy_wristlog.so
  fi
  python3 "$source/examples/python_host.py" | tail -n 2
  [ "$(python3 -c 'import hy_wristlog; print(hy_wristlog.__version__)')" = "$version" ]
fi

bash -n "$prefix/share/bash-completion/completions/wristlog"
grep -q '^#compdef wristlog' "$prefix/share/zsh/vendor-completions/_wristlog"
manual=$(zcat -f "$prefix"/share/man/man1/wristlog.1* | sed 's/\\-/-/g; s/\\f[BR]//g')
grep -qF "HY_Wristlog $version" <<<"$manual"
commands=$(grep '^\.B ' <<<"$manual")
for command in $("$prefix/bin/wristlog" --help | sed -n '/^Subcommands:/,/^$/s/^  \([a-z-]*\) .*/\1/p'); do
  grep -qw -- "$command" <<<"$commands" || { echo "the man page does not know the command $command"; exit 1; }
done
