#!/usr/bin/env bash
# make-packages.sh BUILD: makes the Debian packages of a build and looks at them with lintian, at
# their manual pages with mandoc. The same sources give the same packages, byte for byte. Their debug
# symbols come into packages in BUILD/dbgsym.
set -euo pipefail
build=$1

SOURCE_DATE_EPOCH=$(dpkg-parsechangelog -l packaging/debian/changelog -S Timestamp)
export SOURCE_DATE_EPOCH
umask 022
rm -rf "$build"/*.deb "$build"/*.ddeb "$build/dbgsym" "$build/repacked"
mkdir "$build/dbgsym"
cpack --config "$build/CPackConfig.cmake" -B "$build" >"$build/cpack.log" 2>&1 || {
  cat "$build/cpack.log" >&2
  exit 1
}
rm -rf "$build/_CPack_Packages"

repack() { # PACKAGE FUNCTION NEW: the package with what the function, run inside it, changes
  dpkg-deb -R "$1" "$build/repacked"
  (cd "$build/repacked" && "$2")
  rm "$1"
  dpkg-deb --root-owner-group -b "$build/repacked" "$3" >/dev/null
  rm -r "$build/repacked"
}

# CPack gives each package with a shared library scripts that call ldconfig. The trigger does that.
drop_scripts() { rm DEBIAN/postinst DEBIAN/postrm; }
for library in "$build"/libqorn-platform_*.deb "$build"/libqorn-client1_*.deb; do
  repack "$library" drop_scripts "$library"
done

# CPack's own sums of the symbols name the files of the build, and its packages have no documentation.
finish_symbols() {
  local name
  name=$(sed -n 's/^Package: //p' DEBIAN/control)
  sed -i '/^Package-Type:/d' DEBIAN/control
  find usr -type f -exec chmod 644 {} +
  find usr -type f -print0 | sort -z | xargs -0 md5sum >DEBIAN/md5sums
  mkdir -p usr/share/doc
  ln -s "${name%-dbgsym}" "usr/share/doc/$name"
}
for package in "$build"/*.ddeb; do
  repack "$package" finish_symbols "$build/dbgsym/$(basename "$package" .ddeb).deb"
done

for package in "$build"/*.deb "$build"/dbgsym/*.deb; do
  printf '%s: %s bytes\n' "$package" "$(stat -c %s "$package")"
done
mandoc -T lint -W warning packaging/man/*.1
lintian --fail-on error,warning --tag-display-limit 0 "$build"/*.deb "$build"/dbgsym/*.deb
printf 'lintian and mandoc: good\n'
