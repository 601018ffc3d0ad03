#!/usr/bin/env bash
# package.sh BUILD: installs into an empty directory and makes the Debian package twice, then checks
# what is in them and transforms the examples with what came out of the package. As root that happens
# in a root directory that holds the package and the C library and nothing else.
# Exit code 77, with a line that begins with SKIP, where there is no dpkg-deb.
set -euo pipefail
umask 022
build=$(realpath "$1")
source=$(realpath "$(dirname "${BASH_SOURCE[0]}")/..")
command -v dpkg-deb >/dev/null || { echo 'SKIP: no dpkg-deb here, so no package was made'; exit 77; }
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

fail() { echo "FAIL: $*" >&2; exit 1; }

expect_files() {  # DIRECTORY FILE...
  local directory=$1 file
  for file in "${@:2}"; do
    [[ -s $directory/$file ]] || fail "$directory lacks $file"
  done
}

# A link of an installed page leads to an installed page.
expect_targets() {  # DIRECTORY
  local page target
  while IFS=: read -r page target; do
    [[ -e $(dirname "$page")/$target ]] || fail "$page: nothing at $target"
  done < <(grep -roP --include='*.md' '\]\(\K[^)#\s]+' "$1")
}

common=(
  bin/kelmora
  share/bash-completion/completions/kelmora
  share/doc/kelmora/README.md
  share/doc/kelmora/CHANGELOG.md
  share/doc/kelmora/LICENSE
  share/doc/kelmora/LICENSE.unicode
  share/doc/kelmora/docs/language.md
  share/doc/kelmora/docs/recipes.md
)

cmake --install "$build" --prefix "$work/prefix" --strip >/dev/null
expect_files "$work/prefix" "${common[@]}" share/zsh/site-functions/_kelmora \
  share/man/man1/kelmora.1
expect_targets "$work/prefix/share/doc/kelmora"

export SOURCE_DATE_EPOCH=1700000000
for folder in package again; do
  (cd "$build" && cpack -G DEB -B "$work/$folder" >"$work/cpack.log" 2>&1) ||
    fail "cpack: $(cat "$work/cpack.log")"
  sleep 1
done
package=("$work"/package/kelmora_*.deb)
cmp "${package[0]}" "$work"/again/kelmora_*.deb || fail 'a second package has other bytes'
if command -v lintian >/dev/null; then
  lintian --allow-root --fail-on error "${package[0]}"
else
  echo 'SKIP: no lintian here, so the package was not held against the rules of Debian'
fi
depends=$(dpkg-deb --field "${package[0]}" Depends)
[[ $depends =~ ^libc6\ \(\>=\ 2\.[0-9]+\)$ ]] || fail "the package depends on $depends"
dpkg-deb --extract "${package[0]}" "$work/root"
expect_files "$work/root/usr" "${common[@]}" \
  share/zsh/vendor-completions/_kelmora share/man/man1/kelmora.1.gz \
  share/doc/kelmora/{copyright,changelog.gz,changelog.Debian.gz}
expect_targets "$work/root/usr/share/doc/kelmora"
for owner in 'The Kelmora developers' 'Unicode, Inc'; do
  grep -q "$owner" "$work/root/usr/share/doc/kelmora/copyright" || fail "no licence of $owner"
done
[[ $(ls "$work/root") == usr ]] || fail "the package holds more than /usr: $(ls "$work/root")"

# A stray path of the build in an installed file would be of no use elsewhere.
if grep -rlF "$source" "$work/root"; then fail 'these files name the directory of the sources'; fi

# What the loader needs, and it alone, turns the unpacked package into a root directory.
libraries=$(ldd "$work/root/usr/bin/kelmora" | grep -oE '/[^ ]+')
for library in $libraries; do
  [[ $library =~ /(libc|libm|libdl|libpthread|ld-linux[^/]*)\.so ]] || fail "needs $library"
  install -D "$library" "$work/root$library"
done

run() {  # ARGUMENT...
  if ((EUID == 0)); then
    chroot "$work/root" /usr/bin/kelmora "$@"
  else
    (cd "$work/root" && env -i usr/bin/kelmora "$@")
  fi
}

version=$(dpkg-deb --field "${package[0]}" Version)
run | grep -qx "Version ${version%-*}" || fail "the program does not state version ${version%-*}"
zcat "$work/root/usr/share/doc/kelmora/changelog.Debian.gz" | grep -qF "kelmora ($version)" ||
  fail "cmake/changelog.Debian does not tell of $version"

mkdir "$work/root/made"
for example in "$work/root"/usr/share/doc/kelmora/examples/*/; do
  name=$(basename "$example")
  place=usr/share/doc/kelmora/examples/$name
  result=$(find "$example/expected" -type f ! -name records.csv -printf '%f\n')
  ((EUID == 0)) && place=/$place
  told=$(run -xml "$place/source.xml" -xsl "$place/style.xsl" -out "made/$result" 2>&1)
  [[ $told == $'\n'"made/$result" ]] || fail "$name: $told"
  cmp "$work/root/made/$result" "$example/expected/$result"
done
echo "$(basename "${package[0]}"): $(stat -c %s "${package[0]}") bytes, all examples are right"
