#!/usr/bin/env bash
# Installs every Debian package the build, the game, the tests and the Debian package need
# (the desktop-file and AppStream validators, dpkg-shlibdeps); with "fuzz", also clang and
# its sanitizer and fuzzer runtimes. Does nothing when all of them are present; uses sudo
# when not root.
set -euo pipefail

packages=(
  build-essential cmake pkg-config
  libsdl2-dev libepoxy-dev libimgui-dev libstb-dev
  libfreetype-dev fonts-dejavu-core
  libgtest-dev libgmock-dev libbenchmark-dev
  libgl1-mesa-dri libegl1 libegl-dev xvfb
  zlib1g-dev desktop-file-utils appstream dpkg-dev file
)
if [ "${1:-}" = "fuzz" ]; then
  packages+=(clang libclang-rt-14-dev)
fi

missing=()
for p in "${packages[@]}"; do
  if ! dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q "install ok installed"; then
    missing+=("$p")
  fi
done

if [ ${#missing[@]} -eq 0 ]; then
  exit 0
fi

echo "Installing: ${missing[*]}"
sudo_cmd=()
if [ "$(id -u)" -ne 0 ]; then sudo_cmd=(sudo); fi
export DEBIAN_FRONTEND=noninteractive
"${sudo_cmd[@]}" apt-get update -q
"${sudo_cmd[@]}" apt-get install -y -q --no-install-recommends "${missing[@]}"
