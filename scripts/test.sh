#!/usr/bin/env bash
# Builds the library, the host, the tests and the command-line host, then runs every test.
#   scripts/test.sh              the ordinary build in build/
#   scripts/test.sh --sanitize   an AddressSanitizer + UndefinedBehaviorSanitizer build in build-asan/
set -euo pipefail
cd "$(dirname "$0")/.."
bash scripts/install-deps.sh

build=build
flags=(-DCMAKE_BUILD_TYPE=RelWithDebInfo -DTQ_WERROR=ON)
if [ "${1:-}" = "--sanitize" ]; then
  build=build-asan
  flags=(-DCMAKE_BUILD_TYPE=Debug -DTQ_WERROR=ON -DTQ_SANITIZE=ON -DTQ_BUILD_BENCH=OFF)
fi

export LC_ALL=C.UTF-8
cmake -S . -B "$build" "${flags[@]}" >/dev/null
cmake --build "$build" -j "$(nproc)"
if [ "$build" = build-asan ]; then
  export ASAN_OPTIONS=detect_leaks=1:abort_on_error=1
  export UBSAN_OPTIONS=print_stacktrace=1:halt_on_error=1
fi
ctest --test-dir "$build" --output-on-failure -j "$(nproc)"
