#!/usr/bin/env bash
# make-image.sh BUILD: makes an OCI image of the development cloud of a build, into BUILD/image, and the
# same for docker load and podman load, BUILD/qorn-devcloud-image.tar. It needs no container daemon and holds
# the program, the libraries that it needs and their licences. The same sources and libraries give the same bytes.
set -euo pipefail
build=$1
root=$build/image-root image=$build/image archive=$build/qorn-devcloud-image.tar
version=$(dpkg-parsechangelog -l packaging/debian/changelog -S Version)
version=${version%-*}
time=$(dpkg-parsechangelog -l packaging/debian/changelog -S Timestamp)
rootless=()
[ "$(id -u)" -eq 0 ] || rootless=(--rootless)

umask 022
rm -rf "$root" "$image" "$archive"
mkdir -p "$root/etc" "$root/tmp"
chmod 1777 "$root/tmp"
DESTDIR=$PWD/$root cmake --install "$build" --component devcloud --strip >/dev/null
rm -r "$root/usr/share/lintian" "$root/usr/share/man"
printf '%s\n' 'root:x:0:0::/:' 'qorn:x:65532:65532::/:' >"$root/etc/passwd"
printf '%s\n' 'root:x:0:' 'qorn:x:65532:' >"$root/etc/group"

# The linker's paths hold on Debian and in the image.
ldd "$root/usr/bin/qorn-devcloud" | grep -o '/[^ ]*' | while read -r library; do
  install -D -m 755 "$library" "$root$library"
  # dpkg knows some of them by a path without /usr, and says with status 1 that it does not know the other.
  file=$(realpath "$library")
  package=$( (dpkg-query --search "$file" "${file#/usr}" 2>/dev/null || true) | sed -n '1s/:.*//p')
  install -D -m 644 "/usr/share/doc/$package/copyright" "$root/usr/share/doc/$package/copyright"
done
find "$root" -exec touch --no-dereference --date="@$time" {} +

umoci init --layout "$image"
umoci new --image "$image:$version"
umoci insert "${rootless[@]}" --history.created "$(date --utc --date="@$time" +%FT%TZ)" \
  --image "$image:$version" "$root" /
umoci config --image "$image:$version" --no-history --created "$(date --utc --date="@$time" +%FT%TZ)" \
  --config.user 65532:65532 --config.stopsignal SIGTERM \
  --config.exposedports 8080/tcp --config.exposedports 8443/tcp --config.exposedports 8090/tcp \
  --config.entrypoint /usr/bin/qorn-devcloud --config.entrypoint --address=0.0.0.0 \
  --config.entrypoint --port=8080 --config.entrypoint --https-port=8443 --config.entrypoint --api-port=8090
umoci gc --layout "$image"
skopeo copy --quiet --insecure-policy "oci:$image:$version" "docker-archive:$archive:qorn-devcloud:$version"
printf '%s:%s: %s of files, %s as a layout\n' "$image" "$version" \
  "$(du --summarize --human-readable "$root" | cut -f 1)" "$(du --summarize --human-readable "$image" | cut -f 1)"
rm -r "$root"
