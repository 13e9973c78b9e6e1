#!/usr/bin/env bash
# setup.sh [demo|test|front|check]: installs the Debian packages that the demo needs, or also those of the tests, or also
# those of the tests behind a front end, or all (the default). Asks for root only when a package is missing.
set -euo pipefail
demo=(
  # Build
  build-essential cmake ninja-build ccache git ca-certificates
  qt6-base-dev qt6-declarative-dev qt6-declarative-dev-tools qt6-multimedia-dev qt6-webengine-dev libgl-dev
  qt6-shadertools-dev qt6-shader-baker
  libcurl4-openssl-dev libboost-dev libmpv-dev
  # Run: QML modules, image formats, fonts, video, a screen
  qml6-module-qtqml qml6-module-qtqml-models qml6-module-qtqml-workerscript
  qml6-module-qtquick qml6-module-qtquick-window qml6-module-qtquick-controls qml6-module-qtquick-layouts
  qml6-module-qtquick-templates qml6-module-qtmultimedia qml6-module-qtwebengine qml6-module-qtwebchannel
  qt6-image-formats-plugins fonts-dejavu-core ffmpeg libgl1-mesa-dri python3 xvfb xauth
)
# The tests make certificates, play through GStreamer, and listen as a screen reader does.
test=(openssl at-spi2-core dbus-daemon gstreamer1.0-plugins-good gstreamer1.0-plugins-bad gstreamer1.0-libav)
# Without these tst_Front is skipped. nginx starts a server of the machine, which nobody expects of a test.
front=(nginx tinyproxy-bin)
check=(
  clang libclang-rt-dev llvm clang-format clang-tidy cppcheck doxygen
  libbenchmark-dev pkgconf mmdebstrap strace valgrind
  weston qt6-wayland
)

case ${1:-check} in
  demo) packages=("${demo[@]}") ;;
  test) packages=("${demo[@]}" "${test[@]}") ;;
  front) packages=("${demo[@]}" "${test[@]}" "${front[@]}") ;;
  check) packages=("${demo[@]}" "${test[@]}" "${front[@]}" "${check[@]}") ;;
  *) echo "usage: scripts/setup.sh [demo|test|front|check]" >&2; exit 2 ;;
esac

missing=()
for package in "${packages[@]}"; do
  dpkg-query -W -f='${Status}' "$package" 2>/dev/null | grep -q '^install ok installed' || missing+=("$package")
done
[ ${#missing[@]} -eq 0 ] && exit 0

as_root=()
if [ "$(id -u)" -ne 0 ]; then
  command -v sudo >/dev/null || { echo "Packages are missing and sudo is not installed: ${missing[*]}" >&2; exit 1; }
  as_root=(sudo)
fi
as_root+=(env DEBIAN_FRONTEND=noninteractive)
echo "Reading the package lists"
"${as_root[@]}" apt-get update -qq
echo "Installing ${#missing[@]} packages and what they need: ${missing[*]}"
last=
"${as_root[@]}" apt-get install -y -qq --no-install-recommends -o APT::Status-Fd=1 "${missing[@]}" |
  while IFS=: read -r kind _ percent _; do # Such as "pmstatus:cmake:12.5:Unpacking cmake".
    [[ $kind =~ ^(dl|pm)status$ && "$kind ${percent%?.*}" != "$last" ]] || continue
    last="$kind ${percent%?.*}" # Shows each ten per cent.
    echo "  $([ "$kind" = dlstatus ] && echo downloaded || echo installed) ${percent%.*} %"
  done
