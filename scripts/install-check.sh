#!/usr/bin/env bash
# Checks the installed library from outside: it installs into a fresh prefix, uses all that the headers declare, builds
# the examples and runs them against the sandbox, makes the Debian packages, and runs the demo from them in a bare root.
set -euo pipefail
cd "$(dirname "$0")/.."
source=$PWD

work=$(mktemp -d)
chmod 755 "$work" # apt reads the packages as another user.
prefix=$work/prefix
built=$work/build
packages=build/package/packages
packages_pid=
sandbox_pid=
cleanup() {
  stop_sandbox
  [ -z "$packages_pid" ] || wait "$packages_pid" || true
  rm -rf "$work"
}
trap cleanup EXIT

fail() {
  echo "install-check: $*" >&2
  exit 1
}

section() { echo "-- $1 (after $SECONDS s)"; }

# quietly COMMAND...: shows the output only if the command fails.
quietly() {
  local log
  log=$(mktemp -p "$work")
  "$@" >"$log" 2>&1 || { tail -n 40 "$log" >&2; fail "failed: $*"; }
}

# install_to PREFIX BUILD [GREP_OPTION]: installs elsewhere and moves, because no file may depend on the place.
install_to() {
  quietly cmake --install "$2" --prefix "$work/elsewhere"
  mv "$work/elsewhere" "$1"
  ! grep -rlF ${3:+"$3"} -e "$source" -e "$work/elsewhere" "$1" || fail "these files contain paths of the build"
}

libdir() { dirname "$(find "$1" -name 'libZelvanoCore.*' -print -quit)"; }

# check_interface: all that the installed headers declare compiles with a host's own warnings, and links.
check_interface() {
  local lib flags
  lib=$(libdir "$prefix")
  read -ra flags < <(PKG_CONFIG_PATH=$lib/pkgconfig pkg-config --cflags --libs zelvano-ui zelvano-mpv zelvano-sandbox)
  mkdir "$work/reference"
  ZELVANO_DOCS_OUTPUT=$work/reference ZELVANO_DOCS_INPUT=$prefix/include/ZelvanoUI quietly doxygen docs/Doxyfile
  tests/install/consumer.py "$work/reference/xml" >"$work/consumer.cpp"
  quietly g++ -std=c++20 -fPIC -Wall -Wextra -Werror -o "$work/consumer" "$work/consumer.cpp" "${flags[@]}" \
    "-Wl,-rpath,$lib"
  quietly "$work/consumer"
  check_type_names "$lib"
}

# check_type_names LIBDIR: no library hides the vtable of a class of the public headers. Otherwise library and host each
# have a typeinfo for it, and dynamic_cast compares their names.
check_type_names() {
  local hidden
  vtables() { nm "$@" | sed -n 's/.* vtable for \(zelvano::.*\)/\1/p' | sort -u; }
  hidden=$(comm -23 <(vtables -C "$1"/libZelvano*.so) <(vtables -DC "$1"/libZelvano*.so) |
    comm -12 - <(vtables -C "$work/consumer"))
  [ -z "$hidden" ] || fail "these classes are not exported: $hidden"
}

# refuses COMPONENT TEXT: find_package fails for the component with a message that contains TEXT.
refuses() {
  mkdir -p "$work/refused"
  cat >"$work/refused/CMakeLists.txt" <<CMAKE
cmake_minimum_required(VERSION 3.25)
project(Refused LANGUAGES CXX)
find_package(ZelvanoUI 0.1 REQUIRED COMPONENTS $1)
CMAKE
  ! cmake -S "$work/refused" -B "$work/refused/build" -DCMAKE_PREFIX_PATH="$prefix" >"$work/log" 2>&1 ||
    fail "find_package found component $1"
  [[ $(tr -s '\n ' ' ' <"$work/log") == *"$2"* ]] ||
    { cat "$work/log" >&2; fail "component $1: unexpected message"; }
}

# build_example NAME PREFIX: builds from a copy outside the source tree, in $built.
build_example() {
  quietly cmake -G Ninja -S "$work/examples/$1" -B "$built/$1" -DCMAKE_BUILD_TYPE=Debug \
    -DCMAKE_PREFIX_PATH="$2" -DCMAKE_CXX_FLAGS='-Wall -Wextra -Werror'
  quietly cmake --build "$built/$1"
}

# start_sandbox REQUESTS: starts one that writes its requests to that file, and sets service to its address.
start_sandbox() {
  "$prefix/bin/zelvano-sandbox" --port 0 >"$1" &
  sandbox_pid=$!
  service=
  for _ in $(seq 100); do
    service=$(sed -n 's,^The recommendation service is at http://\(.*\)/$,\1,p' "$1")
    [ -z "$service" ] || return 0
    sleep 0.1
  done
  fail "the sandbox did not start"
}

stop_sandbox() {
  [ -z "$sandbox_pid" ] || kill "$sandbox_pid" 2>/dev/null || true
  [ -z "$sandbox_pid" ] || wait "$sandbox_pid" 2>/dev/null || true
  sandbox_pid=
}

# run_example NAME terminal|window EVENT...: the program exits with status 0 and the sandbox received the events. What it
# prints stays in $built/home-NAME/output.
run_example() {
  local name=$1 place=$2 home=$built/home-$1
  local program=("$built/$name/$name") event
  shift 2
  [ "$place" = terminal ] || program=(xvfb-run -a -s '-screen 0 1280x1280x24 +extension GLX' "${program[@]}")
  install -d -m 700 "$home"
  start_sandbox "$home/requests"
  local arguments=(--service "$service")
  [[ $name != @(qml|mpv)-* ]] || arguments=("http://$service/media/1.mp4" "$service")
  env -u DISPLAY -u WAYLAND_DISPLAY HOME="$home" XDG_CONFIG_HOME="$home" XDG_RUNTIME_DIR="$home" "${media[@]}" \
    timeout 60 "${program[@]}" --quit-after 7 "${arguments[@]}" >"$home/output" 2>"$home/log" ||
    { tail -n 20 "$home/log" >&2; fail "example $name failed"; }
  stop_sandbox
  for event in "$@"; do
    grep -qE " /events +$event " "$home/requests" ||
      { cat "$home/requests" >&2; fail "example $name: the service did not receive $event"; }
  done
  echo "$name: $*"
}

# build_examples: all at once.
build_examples() {
  local example building=()
  for example in examples/*/; do
    build_example "$(basename "$example")" "$prefix" &
    building+=($!)
  done
  for example in "${building[@]}"; do wait "$example"; done
}

# check_example NAME PLACE EVENT...: runs it beside those that run.
check_example() {
  checked+=("$1")
  (
    trap stop_sandbox EXIT
    run_example "$@"
  ) &
  running+=($!)
}

await_examples() {
  local example
  for example in "${running[@]}"; do wait "$example"; done
  running=()
}

# check_sandbox PREFIX: a host can start the service in its own process.
check_sandbox() {
  build_example in-process "$1"
  quietly timeout 20 "$built/in-process/in-process"
}

# check_pkgconfig: an example builds with pkg-config instead of CMake.
check_pkgconfig() {
  local lib flags
  lib=$(libdir "$prefix")
  read -ra flags < <(PKG_CONFIG_PATH=$lib/pkgconfig pkg-config --cflags --libs zelvano-core)
  quietly g++ -std=c++20 -fPIC -o "$built/other-engine/other-engine" "$work"/examples/other-engine/*.cpp \
    "${flags[@]}" "-Wl,-rpath,$lib"
  run_example other-engine terminal ready
}

# check_static: static libraries contain their resources. Without them an example finds no bundle and shows no overlay.
check_static() {
  local built=$work/build-static
  scripts/build.sh check static
  install_to "$work/static" build/static -I # -I: objects of a debug build name their sources.
  build_example cpp-overlay "$work/static"
  run_example cpp-overlay window ready impression
  check_sandbox "$work/static"
}

# package_depends PACKAGE: prints the package names of its Depends field.
package_depends() { dpkg-deb -f "$packages/$1"_*.deb Depends | tr ',' '\n' | sed 's/^ *//; s/ .*//'; }

# runtime_packages: prints the names of all packages but the -dev ones.
runtime_packages() {
  local file
  for file in "$packages"/*.deb; do
    dpkg-deb -f "$file" Package
  done | grep -v -e '-dev$'
}

# check_linked PACKAGE FILE: the package depends on the owner of each library that the file links.
check_linked() {
  local library path owner depends
  depends=" $(package_depends "$1" | xargs) "
  objdump -p "$2" 2>/dev/null | awk '$1 == "NEEDED" {print $2}' | while read -r library; do
    path=$(ldd "$2" | awk -v name="$library" '$1 == name {print $3}')
    [[ $library != ld-linux* && $path != "$work"/* ]] || continue # libc brings the loader; the others are ours.
    [[ $path == /* ]] || fail "$1 needs $library, which is missing"
    owner=$(dpkg -S "*${path#/usr}" | sed -n '1s/:.*//p') # dpkg knows it below /lib or /usr/lib, which are the same.
    [[ $depends == *" $owner "* ]] || fail "$1 needs $library but does not depend on $owner"
  done
}

# check_declared: stands in for the bare root. Each linked library and each imported QML
# module belongs to a package that ours depend on.
check_declared() {
  local package file
  for package in $(runtime_packages); do
    dpkg-deb -x "$packages/$package"_*.deb "$work/unpacked"
  done
  for package in $(runtime_packages); do
    for file in $(dpkg-deb -c "$packages/$package"_*.deb | awk '$1 ~ /^-/ {print $6}'); do
      check_linked "$package" "$work/unpacked/$file"
    done
  done
  check_qml_declared libzelvanoui resources/ZelvanoUIResources.bundle
  check_qml_declared zelvanoui-demo demo
  check_qml_declared qml6-module-zelvanoui build/package/qml/ZelvanoUI
  check_qml_declared libzelvanoui-mpv build/package/qml/ZelvanoUI/Mpv
}

check_qml_declared() {
  comm -13 <(package_depends "$1" | sort -u) <(cmake/qml-depends.sh "$2") >"$work/missing"
  [ ! -s "$work/missing" ] || fail "$1 imports QML modules but does not depend on $(xargs <"$work/missing")"
}

# check_bare_root: installs the packages into a root that holds only the essential packages of this machine's
# distribution, and replays a demo session there. Returns 1 if this machine cannot make such a root.
check_bare_root() {
  command -v mmdebstrap >/dev/null || return 1
  local repository=$work/repository made=$work/made sources
  mkdir -p "$repository" "$made"
  chmod 1777 "$made"
  cp "$packages"/*.deb "$repository"
  (cd "$repository" && dpkg-scanpackages . >Packages 2>/dev/null) || fail "dpkg-scanpackages failed"
  sources=$(apt-get indextargets --format 'deb $(SITE) $(RELEASE) $(COMPONENT)' \
    'Created-By: Packages' 'Origin: Debian' | sort -u)
  [ -n "$sources" ] || return 1
  printf '%s\ndeb [trusted=yes] copy:%s ./\n' "$sources" "$repository" >"$work/sources.list"
  cat >"$work/run-demo" <<HOOK
set -e
cp "$source/demo/smoke.script" "\$1/tmp/"
cp "\$XAUTHORITY" "\$1/tmp/xauthority"
chroot "\$1" zelvano-sandbox --help >/dev/null
chroot "\$1" env -i PATH=/usr/bin:/bin LANG=C.UTF-8 HOME=/tmp XDG_RUNTIME_DIR=/tmp DISPLAY="\$DISPLAY" \
  XAUTHORITY=/tmp/xauthority ${media[*]} timeout 90 zelvano-demo --script /tmp/smoke.script --screenshots /tmp \
  --trace /tmp/trace.jsonl
touch "$made/played"
HOOK
  timeout 300 xvfb-run -a -s '-screen 0 1280x1280x24 +extension GLX' \
    mmdebstrap --variant=essential --format=null --include="$(runtime_packages | paste -sd ,)" \
    --aptopt='Apt::Install-Recommends "false"' --dpkgopt='path-exclude=/usr/share/doc/*' \
    --essential-hook="touch $made/root" --customize-hook="sh $work/run-demo \"\$1\"" \
    "$(. /etc/os-release && echo "$VERSION_CODENAME")" - - <"$work/sources.list" >"$work/log" 2>&1 || true
  [ -e "$made/root" ] || return 1
  [ -e "$made/played" ] || { tail -n 40 "$work/log" >&2; fail "the demo failed in a bare root"; }
}

check_packages() {
  rm -rf "$packages"
  quietly cpack --preset package
  if check_bare_root; then
    echo "The demo ran in a bare root that holds only the packages and their dependencies."
  else
    echo "This machine cannot make a bare root. Checking instead that the packages declare all that they link and import."
    check_declared
  fi
}

# For the same reasons as in scripts/demo.sh.
media=(QT_MEDIA_BACKEND=ffmpeg)
[ "$(id -u)" -ne 0 ] || media+=(QTWEBENGINE_DISABLE_SANDBOX=1)

section "install"
scripts/build.sh check package
install_to "$prefix" build/package
check_interface
refuses Nonsense 'ZelvanoUI has no component "Nonsense": there are Core, UI, Mpv and Sandbox.'

section "packages, beside the examples"
check_packages >"$work/packages" 2>&1 &
packages_pid=$!

section "examples"
cp -r examples "$work"
cp -r tests/install/in-process "$work/examples"
build_examples
checked=()
running=()
check_example engine-only terminal page ready start autoPlay end
check_example other-engine terminal page ready start autoPlay pause play end
check_example cpp-list window page ready start autoPlay
await_examples
check_example cpp-overlay window page ready start autoPlay pause impression
check_example qml-list window page ready start autoPlay
await_examples
check_example qml-overlay window page ready start autoPlay
check_example mpv-overlay window page ready start autoPlay
await_examples
grep -q '^recommended: ' "$built/home-engine-only/output" || fail "engine-only printed no recommendation"
grep -q '^event: end$' "$built/home-engine-only/output" || fail "engine-only printed no event"
for example in examples/*/; do
  [[ " ${checked[*]} " == *" $(basename "$example") "* ]] || fail "$example is not checked"
done

section "the sandbox in a host's process"
check_sandbox "$prefix"

section "pkg-config"
check_pkgconfig

section "static libraries"
check_static

section "packages"
wait "$packages_pid" || { cat "$work/packages" >&2; exit 1; }
cat "$work/packages"
