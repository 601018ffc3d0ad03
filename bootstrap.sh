#!/usr/bin/env bash
# ./bootstrap.sh        installs what is missing, builds build/kelmora, transforms an example
# ./bootstrap.sh test   the same, then builds with sanitizers too and runs all tests of both builds
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")"

install_missing() {
  local package missing=()
  while read -r package; do
    dpkg-query --show --showformat='${db:Status-Status}' "$package" 2>/dev/null |
      grep -qx installed || missing+=("$package")
  done < <(grep -v '^#' packages.txt)
  if ((${#missing[@]} == 0)); then return; fi

  local as_root=()
  if ((EUID != 0)); then as_root=(sudo); fi
  echo "Installing ${missing[*]}"
  "${as_root[@]}" apt-get update
  "${as_root[@]}" env DEBIAN_FRONTEND=noninteractive \
    apt-get install --yes --no-install-recommends "${missing[@]}"
}

build() {  # PRESET
  cmake --preset "$1"
  cmake --build --preset "$1"
}

transform() {  # EXAMPLE RESULT
  build/kelmora -xml "examples/$1/source.xml" -xsl "examples/$1/style.xsl" -out "build/$2"
}

show_example() {
  transform article article.html >/dev/null
  transform outline outline.txt >/dev/null
  echo
  cat build/outline.txt
  echo
  echo "That was examples/outline. examples/article makes a web page of the same source:"
  echo "open build/article.html in a browser."
}

if command -v dpkg-query >/dev/null; then install_missing; fi
if command -v ccache >/dev/null; then export CMAKE_CXX_COMPILER_LAUNCHER=ccache; fi
build release
show_example

case "${1-}" in
  '') ;;
  test)
    build sanitize
    ctest --preset release
    ctest --preset sanitize
    ;;
  *)
    echo "usage: ./bootstrap.sh [test]" >&2
    exit 2
    ;;
esac
