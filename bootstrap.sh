#!/usr/bin/env bash
# ./bootstrap.sh        installs what is missing, builds build/kelmora, transforms some of the examples
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
  build/kelmora -xml "examples/$1/source.xml" -xsl "examples/$1/style.xsl" -out "build/$2" >/dev/null
}

show_examples() {
  transform records-to-report report.txt
  transform feed-to-page feed.html
  transform article-to-page article.html
  transform shiftjis-to-utf8 catalogue.html
  echo
  cat build/report.txt
  echo
  echo "That was examples/records-to-report. Three others make pages; open them in a browser:"
  echo "build/article.html, build/feed.html and build/catalogue.html."
}

if command -v dpkg-query >/dev/null; then install_missing; fi
if command -v ccache >/dev/null; then export CMAKE_CXX_COMPILER_LAUNCHER=ccache; fi
build release
show_examples

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
