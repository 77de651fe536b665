#!/usr/bin/env bash
# Installs a minimal Debian 12 in a folder of its own, from this machine's package sources, copies the checkout into it
# and runs there the commands that README names: "demo" and "test", or those that are given. Needs root, debootstrap,
# and a kernel that lets it mount.
set -euo pipefail
checkout=$(cd "$(dirname "$0")/../.." && pwd)
suite=bookworm
(($#)) || set -- demo test

fail() {
  echo "fresh machine: $*" >&2
  exit 1
}
[ "$(id -u)" = 0 ] || fail "installing another system into a folder takes root"
command -v debootstrap >/dev/null || fail "debootstrap is missing"
sources=$(apt-get indextargets --format "deb \$(REPO_URI) \$(RELEASE) \$(COMPONENT)" 'Created-By: Packages' |
  awk -v suite=$suite '$3 ~ "^" suite "(-|$)" && $4 == "main" && !seen[$0]++')
mirror=$(awk -v suite=$suite '$3 == suite { print $2; exit }' <<<"$sources")
[ -n "$mirror" ] || fail "this machine's package sources have no $suite"
case $sources in *https://*) keys=(--include=ca-certificates) ;; *) keys=() ;; esac
eval "$(apt-config shell proxy Acquire::http::Proxy)"

work=$(mktemp -d -p "${TMPDIR:-/var/tmp}" fresh-machine-XXXXXX)
root=$work/root
inside=
# What is mounted is seen by the processes inside alone, and goes with the first of them: nothing is removed through it.
clean() {
  if [ -n "$inside" ]; then
    kill -KILL "$inside" 2>/dev/null || true
    wait "$inside" 2>/dev/null || true
  fi
  for _ in 1 2 3; do  # the last of them may still be dying
    if rm -rf --one-file-system "$work"; then break; fi
    sleep 1
  done
}
trap clean EXIT
trap 'exit 130' INT
trap 'exit 143' TERM HUP
within() {
  unshare --mount --pid --fork --kill-child "$@" </dev/null &
  inside=$!
  local status=0
  wait "$inside" || status=$?
  inside=
  return "$status"
}

echo "Installing a minimal Debian 12 ..."
SECONDS=0
[ -z "${proxy:-}" ] || export http_proxy=$proxy
within debootstrap --variant=minbase "${keys[@]}" $suite "$root" "$mirror" >"$work/log" 2>&1 || {
  tail -n 20 "$work/log" >&2
  fail "debootstrap failed"
}
echo "$sources" >"$root/etc/apt/sources.list"
[ -z "${proxy:-}" ] || echo "Acquire::http::Proxy \"$proxy\";" >"$root/etc/apt/apt.conf.d/proxy"
cp /etc/hosts /etc/resolv.conf "$root/etc/"
mkdir "$root/checkout"
git -c safe.directory="$checkout" -C "$checkout" ls-files -z |
  tar -C "$checkout" --null --no-recursion -T - -c | tar -C "$root/checkout" --no-same-owner -x
echo "Installed in $SECONDS s."

for command in "$@"; do
  echo "In the fresh machine: ./dev $command"
  TIMEFORMAT="./dev $command took %0R s with installing, and computed for %0U + %0S s on $(nproc) cores."
  # shellcheck disable=SC2016
  time within bash -c 'set -e
    mount -t proc proc "$0/proc"
    mount -t devpts -o newinstance,ptmxmode=0666,mode=0620 devpts "$0/dev/pts"
    exec chroot "$0" /usr/bin/env -i HOME=/root PATH=/usr/sbin:/usr/bin:/sbin:/bin TERM=dumb \
      bash -c "cd /checkout && exec ./dev $1"' "$root" "$command" || fail "./dev $command failed"
done
