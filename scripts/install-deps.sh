#!/usr/bin/env bash
# Installs the Debian packages the build, the tests and the benchmark need.
#   scripts/install-deps.sh           everything (development: tests, tools they compare with)
#   scripts/install-deps.sh --build   only what building, installing and packaging need
# Idempotent: only missing packages are installed, and the package index is
# refreshed at most once per run.
set -euo pipefail

# dpkg-dev (dpkg-shlibdeps) and file let cpack read the package's dependencies.
packages=(
  build-essential cmake pkg-config dpkg-dev file
  libarchive-dev zlib1g-dev libboost-log-dev libboost-locale-dev libboost-dev libcli11-dev
)
if [ "${1:-}" != "--build" ]; then
  packages+=(
    libgtest-dev googletest groff-base
    zip unzip p7zip-full libarchive-tools tar gzip pigz python3
    clang libclang-rt-14-dev util-linux
  )
fi

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
