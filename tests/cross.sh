#!/usr/bin/env bash
# Builds the program for other processors, one of them with the bytes of a number in the other
# order, and runs the golden cases and the examples with each under emulation.
#
# usage: tests/cross.sh [PROCESSOR...]     aarch64 and s390x if none is named
#
# Needs Debian's packages g++-PROCESSOR-linux-gnu (with "-" for "_") and qemu-user, which
# bootstrap.sh does not install; builds in build-PROCESSOR/. Cases that need ICU see none there, so
# those of sorting by a language are left out.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."

build() {  # PROCESSOR
  cmake -S . -B "build-$1" -DCMAKE_BUILD_TYPE=Release -DKELMORA_TESTS=OFF \
    -DCMAKE_SYSTEM_NAME=Linux -DCMAKE_SYSTEM_PROCESSOR="$1" \
    -DCMAKE_CXX_COMPILER="$1-linux-gnu-g++"
  cmake --build "build-$1" --target kelmora --parallel "$(nproc)"
}

wrap() {  # PROCESSOR: a program that looks like one of this machine
  local runner=build-$1/kelmora-emulated
  printf '#!/bin/sh\nexec qemu-%s -L /usr/%s-linux-gnu "%s" "$@"\n' \
    "$1" "$1" "$PWD/build-$1/kelmora" >"$runner"
  chmod +x "$runner"
}

if (($# == 0)); then set -- aarch64 s390x; fi
for processor in "$@"; do
  build "$processor"
  wrap "$processor"
  echo "$processor:"
  tests/run_cases.py "build-$processor/kelmora-emulated" tests/cases examples
done
