#!/usr/bin/env bash
# Installs every Debian package needed to build, test and run Quillotone.
# Safe to run again: apt-get skips what is already there.
set -euo pipefail

packages=(
  # toolchain
  build-essential cmake ninja-build pkg-config git ccache
  # the fuzz targets: clang, and its runtime with libFuzzer
  clang libclang-rt-14-dev
  # interface, audio devices, network, settings, XML
  qt6-base-dev qt6-base-dev-tools qt6-multimedia-dev libgl-dev
  qt6-qpa-plugins libqt6multimedia6
  # decoding and encoding (the -extra codec build carries AMR-NB, AMR-WB and LAME)
  libavformat-dev libavcodec-dev libavutil-dev libswresample-dev libavcodec-extra
  libopencore-amrnb-dev libvo-amrwbenc-dev libmp3lame-dev
  libtag1-dev
  # audio CD and disc names
  libcdio-dev libcdio-paranoia-dev libcddb2-dev
  # cipher, hash and the bundled web service
  libssl-dev libsqlite3-dev libcpp-httplib-dev
  # a near-expired certificate for the service's renewal test
  openssl
  # the sound server the program plays and records through
  pulseaudio pulseaudio-utils
  # making and checking test audio, headless X for screenshots, fonts
  ffmpeg sox espeak-ng xvfb xauth fonts-dejavu-core fonts-noto-core
  # the rip benchmark's yardstick
  cd-paranoia
  # checking the install tree and the packages
  desktop-file-utils file curl dpkg-dev
  # driving the installed program as a user does
  xdotool imagemagick
  # the skin's rounded face
  fonts-comfortaa
)

SUDO=""
if [ "$(id -u)" -ne 0 ]; then SUDO="sudo"; fi

missing=()
for p in "${packages[@]}"; do
  dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q 'install ok installed' || missing+=("$p")
done
if [ ${#missing[@]} -gt 0 ]; then
  export DEBIAN_FRONTEND=noninteractive
  $SUDO apt-get update -qq
  $SUDO apt-get install -y -qq --no-install-recommends "${missing[@]}"
fi
