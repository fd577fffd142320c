#!/usr/bin/env bash
# install-deps.sh -- installs every Debian package that ostrum_gl needs to build, test and run.
# Idempotent: it asks apt only for what is missing, and runs `apt-get update` only then.
set -euo pipefail

packages=(
  # toolchain and test tools
  build-essential cmake pkg-config clang libclang-rt-14-dev
  libgtest-dev libgmock-dev libbenchmark-dev
  # OpenGL stack: Mesa, GLU, freeglut, X11 and an X server for the tests
  libgl1-mesa-dri libgl1-mesa-dev libglu1-mesa-dev freeglut3-dev
  libx11-dev libxtst-dev xvfb xauth x11-utils
  # images
  libjpeg62-turbo-dev libpng-dev imagemagick
  # fonts
  libfreetype-dev libfontconfig-dev fontconfig fonts-liberation fonts-dejavu-core
  # movies
  libavformat-dev libavcodec-dev libswscale-dev libavutil-dev ffmpeg
)

missing=()
for p in "${packages[@]}"; do
  if ! dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q '^install ok installed$'; then
    missing+=("$p")
  fi
done

if [ ${#missing[@]} -eq 0 ]; then
  exit 0
fi

echo "install-deps: installing ${missing[*]}"
sudo=""
if [ "$(id -u)" -ne 0 ]; then sudo="sudo"; fi
$sudo apt-get update -qq
DEBIAN_FRONTEND=noninteractive $sudo apt-get install -y -qq --no-install-recommends "${missing[@]}"
