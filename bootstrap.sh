#!/usr/bin/env bash
# ./bootstrap.sh        installs what is missing, builds build/kelmora, transforms some examples
# ./bootstrap.sh test   the same, then builds with sanitizers too and runs all tests of both builds
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")"

install_missing() {  # PACKAGES, one a line
  local package missing=() known=()
  while read -r package; do
    dpkg-query --show --showformat='${db:Status-Status}' "$package" 2>/dev/null |
      grep -qx installed || missing+=("$package")
  done <<<"$(grep -v '^#' <<<"$1")"
  if ((${#missing[@]} == 0)); then return; fi

  local as_root=()
  if ((EUID != 0)); then as_root=(sudo); fi
  "${as_root[@]}" apt-get update
  for package in "${missing[@]}"; do
    if apt-cache show "$package" >/dev/null 2>&1; then
      known+=("$package")
    else
      echo "There is no package $package here; tests that need it will be skipped."
    fi
  done
  if ((${#known[@]} == 0)); then return; fi
  echo "Installing ${known[*]}"
  "${as_root[@]}" env DEBIAN_FRONTEND=noninteractive \
    apt-get install --yes --no-install-recommends "${known[@]}"
}

build() {  # PRESET [TARGET]
  cmake --preset "$1"
  cmake --build --preset "$1" --target "${2-all}"
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

case "${1-}" in
  '') wanted=$(sed '/^# From here on/q' packages.txt) ;;
  test) wanted=$(<packages.txt) ;;
  *)
    echo "usage: ./bootstrap.sh [test]" >&2
    exit 2
    ;;
esac

if command -v dpkg-query >/dev/null; then install_missing "$wanted"; fi
if command -v ccache >/dev/null; then export CMAKE_CXX_COMPILER_LAUNCHER=ccache; fi
build release kelmora
show_examples

if [[ ${1-} == test ]]; then
  build release
  build sanitize
  ctest --preset release
  ctest --preset sanitize
fi
