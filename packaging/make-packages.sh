#!/usr/bin/env bash
# make-packages.sh BUILD: makes the Debian packages of a build and looks at them with lintian, at
# their manual pages with mandoc. The same sources give the same packages, byte for byte.
set -euo pipefail
build=$1

SOURCE_DATE_EPOCH=$(dpkg-parsechangelog -l packaging/debian/changelog -S Timestamp)
export SOURCE_DATE_EPOCH
umask 022
rm -rf "$build"/*.deb "$build/repacked"
cpack --config "$build/CPackConfig.cmake" -B "$build" >"$build/cpack.log" 2>&1 || {
  cat "$build/cpack.log" >&2
  exit 1
}
rm -rf "$build/_CPack_Packages"

# CPack gives each package with a shared library scripts that call ldconfig. The trigger does that.
for library in "$build"/libqorn-platform_*.deb "$build"/libqorn-client1_*.deb; do
  dpkg-deb -R "$library" "$build/repacked"
  rm "$build/repacked/DEBIAN/postinst" "$build/repacked/DEBIAN/postrm"
  dpkg-deb --root-owner-group -b "$build/repacked" "$library" >/dev/null
  rm -r "$build/repacked"
done

for package in "$build"/*.deb; do
  printf '%s: %s bytes\n' "$package" "$(stat -c %s "$package")"
done
mandoc -T lint -W warning packaging/man/*.1
lintian --fail-on error,warning --tag-display-limit 0 "$build"/*.deb
printf 'lintian and mandoc: good\n'
