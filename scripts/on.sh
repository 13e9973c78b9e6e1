#!/usr/bin/env bash
# on.sh [--bare] RELEASE COMMAND...: runs a command in a copy of this checkout, in a fresh root of a Debian release:
# bookworm or trixie. The root has the packages that the tests need; with --bare only the essential ones and an empty compiler
# cache. Test logs, packages and demo-output/ are copied to build/on/RELEASE. Needs root and mmdebstrap.
#
# Roots and compiler caches stay in ~/.cache/zelvano. What the command changes in its root is dropped.
set -euo pipefail
cd "$(dirname "$0")/.."

fail() {
  echo "on.sh: $*" >&2
  exit 1
}

bare=
[ "${1:-}" != --bare ] || { bare=-bare; shift; }
release=${1:-}
[[ $release =~ ^(bookworm|trixie)$ && $# -gt 1 ]] || fail "usage: scripts/on.sh [--bare] bookworm|trixie COMMAND..."
shift
[ "$(id -u)" -eq 0 ] || fail "only root can enter another root: use sudo"
command -v mmdebstrap >/dev/null || fail "mmdebstrap is missing: scripts/setup.sh check installs it"

source=$PWD
cache=${XDG_CACHE_HOME:-$HOME/.cache}/zelvano
root=$cache/roots/$release$bare
mkdir -p "$cache/roots" "$cache/ccache-$release"
find "$cache" -maxdepth 1 -name 'run.*' -mmin +600 -exec rm -rf --one-file-system {} + # Of runs that were killed.
run=$(mktemp -d "$cache/run.XXXXXX")
trap 'rm -rf --one-file-system "$run"' EXIT
mkdir "$run/upper" "$run/work" "$run/root"

# sources: this machine's mirrors, for the other release.
sources() {
  local here lines
  here=$(. /etc/os-release && echo "$VERSION_CODENAME")
  lines=$(apt-get indextargets --format 'deb $(SITE) $(RELEASE) $(COMPONENT)' 'Created-By: Packages' 'Origin: Debian' |
    sed -nE "s/ $here(-[a-z]+)? / $release\1 /p" | sort -u)
  echo "${lines:-deb http://deb.debian.org/debian $release main}"
}

# copy_checkout FOLDER: all files that git does not ignore, as a repository.
copy_checkout() {
  mkdir -p "$1"
  git ls-files -zco --exclude-standard | xargs -0 sh -c 'for file; do [ ! -e "$file" ] || printf "%s\0" "$file"; done' sh |
    tar -c --null -T - | tar -x -C "$1"
  git -C "$1" init -q
  git -C "$1" add -A
}

# within FOLDER COMMAND...: runs the command in the root FOLDER, in namespaces that end with it.
within() {
  unshare --mount --pid --fork --kill-child bash -c '
    set -e
    root=$1
    shift
    mount -t proc proc "$root/proc"
    mount --rbind /sys "$root/sys"
    mount --rbind /dev "$root/dev"
    cat /etc/resolv.conf >"$root/etc/resolv.conf"
    cat /etc/hosts >"$root/etc/hosts"
    [ ! -d "$root/root/.cache/ccache" ] || mount --bind "$CCACHE" "$root/root/.cache/ccache"
    exec chroot "$root" env -i HOME=/root PATH=/usr/sbin:/usr/bin:/sbin:/bin LANG=C.UTF-8 TERM="${TERM:-dumb}" \
      ${CI:+CI="$CI"} bash -c "cd /srv/zelvano 2>/dev/null || cd /; exec \"\$@\"" bash "$@"' \
    bash "$@" </dev/null
}

is_ready() { [ -d "$root" ] && { [ -n "$bare" ] || cmp -s scripts/setup.sh "$root/srv/setup.sh"; }; }

# make_root: makes the root, or adds the packages that setup.sh lists now.
make_root() {
  if [ ! -d "$root" ]; then
    echo "on.sh: making a root of $release (about ten seconds)"
    rm -rf --one-file-system "$root.new"
    sources >"$run/sources"
    timeout 600 mmdebstrap --mode=root --variant=minbase --include=ca-certificates --dpkgopt=force-unsafe-io \
      --format=directory "$release" "$root.new" - <"$run/sources" >"$run/log" 2>&1 ||
      { tail -n 20 "$run/log" >&2; fail "mmdebstrap failed"; }
    mkdir -p "$root.new/srv/zelvano"
    mv "$root.new" "$root"
  fi
  ! is_ready || return 0
  cp scripts/setup.sh "$root/srv/setup.new"
  mkdir -p "$root/root/.cache/ccache"
  CCACHE=$cache/ccache-$release within "$root" timeout 1200 bash /srv/setup.new front || fail "setup.sh failed on $release"
  mv "$root/srv/setup.new" "$root/srv/setup.sh"
}

exec 9>"$root.lock"
flock -w 1800 -s 9 || fail "another run still makes this root"
if ! is_ready; then
  flock -w 1800 9 || fail "other runs still use the old root"
  make_root
  flock -s 9
fi

status=0
copy_checkout "$run/upper/srv/zelvano"
export run root CCACHE=$cache/ccache-$release
export -f within
unshare --mount bash -c '
  set -e
  mount -t overlay overlay -o "lowerdir=$root,upperdir=$run/upper,workdir=$run/work" "$run/root" 2>/dev/null ||
    { cp -a --reflink=auto "$root/." "$run/root"; cp -a "$run/upper/." "$run/root"; mount --bind "$run/root" "$run/root"; }
  within "$run/root" "$@"' bash "$@" || status=$?

made=$run/upper/srv/zelvano
[ -d "$run/root/srv" ] && made=$run/root/srv/zelvano
out=$source/build/on/$release$bare
rm -rf "$out"
mkdir -p "$out"
(cd "$made" && find . \( -path './build/*/packages/*.deb' -o -path './build/*/Testing/*' -o -path './demo-output/*' \) \
  -type f -exec cp --parents -t "$out" {} +)
exit "$status"
