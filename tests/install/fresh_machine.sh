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
  awk -v suite=$suite '$3 ~ "^" suite "(-|$)" && $4 == "main"')
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
  rm -rf --one-file-system "$work"
}
trap clean EXIT
trap 'exit 130' INT
trap 'exit 143' TERM HUP

echo "Installing a minimal Debian 12 ..."
SECONDS=0
http_proxy=${proxy:-${http_proxy:-}} debootstrap --variant=minbase "${keys[@]}" $suite "$root" "$mirror" \
  >"$work/debootstrap.log" 2>&1 || { tail -n 20 "$work/debootstrap.log" >&2; fail "debootstrap failed"; }
echo "$sources" >"$root/etc/apt/sources.list"
[ -z "${proxy:-}" ] || echo "Acquire::http::Proxy \"$proxy\";" >"$root/etc/apt/apt.conf.d/proxy"
cp /etc/hosts /etc/resolv.conf "$root/etc/"
mkdir "$root/checkout"
git -c safe.directory="$checkout" -C "$checkout" ls-files -z |
  tar -C "$checkout" --null -T - --no-recursion -c | tar -C "$root/checkout" --no-same-owner -x
echo "It took $SECONDS s."

for command in "$@"; do
  echo "In the fresh machine: ./dev $command"
  SECONDS=0
  # shellcheck disable=SC2016
  unshare --mount --pid --fork --kill-child bash -c '
    mount -t proc proc "$0/proc"
    mount -t devpts -o newinstance,ptmxmode=0666,mode=0620 devpts "$0/dev/pts"
    exec chroot "$0" /usr/bin/env -i HOME=/root PATH=/usr/sbin:/usr/bin:/sbin:/bin TERM=dumb \
      bash -c "cd /checkout && exec ./dev $1"' "$root" "$command" </dev/null &
  inside=$!
  wait "$inside" || fail "./dev $command failed"
  inside=
  echo "./dev $command took $SECONDS s, installing included."
done
