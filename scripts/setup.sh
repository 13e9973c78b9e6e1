#!/usr/bin/env bash
# Installs the Debian 12 packages that the project needs. Asks for root only when a package is missing.
set -euo pipefail
packages=(
  # Build
  build-essential cmake ninja-build ccache pkgconf git ca-certificates
  qt6-base-dev qt6-declarative-dev qt6-declarative-dev-tools qt6-multimedia-dev qt6-webengine-dev libgl-dev
  qt6-shadertools-dev qt6-shader-baker
  libcurl4-openssl-dev libboost-dev libbenchmark-dev
  # Run: QML modules, image formats, fonts, video
  qml6-module-qtqml qml6-module-qtqml-models qml6-module-qtqml-workerscript
  qml6-module-qtquick qml6-module-qtquick-window qml6-module-qtquick-controls qml6-module-qtquick-layouts
  qml6-module-qtquick-templates qml6-module-qtmultimedia qml6-module-qtwebengine qml6-module-qtwebchannel
  qt6-image-formats-plugins fonts-dejavu-core ffmpeg libgl1-mesa-dri
  gstreamer1.0-plugins-good gstreamer1.0-plugins-bad gstreamer1.0-libav
  # Check: analysis, fuzzing, the reference, a screen, packages
  clang libclang-rt-dev llvm clang-format clang-tidy cppcheck doxygen
  python3 openssl xvfb xauth mmdebstrap strace valgrind
)

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
echo "Installing ${#missing[@]} packages: ${missing[*]}"
export DEBIAN_FRONTEND=noninteractive
"${as_root[@]}" apt-get update -qq
"${as_root[@]}" apt-get install -y -qq --no-install-recommends "${missing[@]}" >/dev/null
