#!/usr/bin/env bash
# Installs what the build, the tests and the reference tools need (Debian
# packages only), then configures and builds into build/.
set -euo pipefail
cd "$(dirname "$0")/.."

packages=(
  build-essential cmake pkg-config
  # The manual page and the Debian packages (dpkg-shlibdeps needs file).
  help2man file
  liblcms2-dev libtiff-dev libpng-dev libjpeg-dev nlohmann-json3-dev libcli11-dev libdeflate-dev
  libx11-dev libxrandr-dev libcups2-dev libgtk-3-dev libcairo2-dev
  googletest libgtest-dev libgmock-dev libbenchmark-dev
  # Reference tools and real profiles the tests compare against.
  liblcms2-utils libtiff-tools argyll colord-data icc-profiles-free libgs-common
  # The Windows build of the module and its smoke run (.ci/windows-build).
  g++-mingw-w64-x86-64-posix wine64
  # Real devices the tests start for themselves: X servers (Xorg with the
  # dummy driver keeps gamma ramps), a print server, and a driver for the
  # colour-matching dialog.
  xvfb xserver-xorg-core xserver-xorg-video-dummy x11-xserver-utils xdotool cups-daemon cups-client
  # mingw-w64's Windows headers: the reference for our stand-in headers' values.
  mingw-w64-x86-64-dev
)
if [ "$(id -u)" = 0 ]; then sudo=""; else sudo="sudo"; fi
missing=()
for p in "${packages[@]}"; do
  dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q "install ok installed" || missing+=("$p")
done
if [ ${#missing[@]} -gt 0 ]; then
  export DEBIAN_FRONTEND=noninteractive
  $sudo apt-get update
  $sudo apt-get install -y --no-install-recommends "${missing[@]}"
fi

cmake -S . -B build -DCMAKE_BUILD_TYPE=RelWithDebInfo ${TESK_CMAKE_FLAGS:-}
cmake --build build -j2
