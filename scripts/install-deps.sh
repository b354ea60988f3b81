#!/usr/bin/env bash
# Installs the Debian packages the build, the tests and the benchmark need.
# Idempotent: only missing packages are installed, and the package index is
# refreshed at most once per run.
set -euo pipefail

packages=(
  build-essential cmake pkg-config
  libarchive-dev zlib1g-dev libboost-log-dev libboost-locale-dev libboost-dev
  libgtest-dev googletest
  zip unzip p7zip-full libarchive-tools tar gzip pigz python3
  clang libclang-rt-14-dev util-linux libcli11-dev groff-base
)

missing=()
for p in "${packages[@]}"; do
  if ! dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q 'install ok installed'; then
    missing+=("$p")
  fi
done

if [ ${#missing[@]} -eq 0 ]; then
  exit 0
fi

echo "Installing missing packages: ${missing[*]}"
SUDO=""
if [ "$(id -u)" -ne 0 ]; then SUDO="sudo"; fi
export DEBIAN_FRONTEND=noninteractive
$SUDO apt-get update -qq
$SUDO apt-get install -y -qq --no-install-recommends "${missing[@]}"
