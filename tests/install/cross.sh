#!/usr/bin/env bash
# cross.sh ARCHITECTURE PACKAGE...: cross-builds component, platform and their tests for an architecture
# of Debian's (arm64) and runs the tests under qemu. It builds in a Debian root of its own, so that this
# machine gets no foreign packages; the root is kept. PACKAGE: the libraries' development packages.
set -euo pipefail
if [ "${1:-}" != --inside ]; then
  exec unshare --mount --pid --fork --kill-child "$0" --inside "$@"
fi
shift
. tests/install/debian.sh
architecture=$1
shift
folder=$PWD/build/$architecture
root=$folder/root
# Programs that the tests start are this machine's.
packages=(ca-certificates cmake "crossbuild-essential-$architecture" dbus-daemon ninja-build pkg-config
  qemu-user-static "${@/%/:$architecture}")
mkdir -p "$folder"
# A root that was not finished, or has other packages, is made anew.
[ "$(cat "$folder/packages" 2>/dev/null)" = "${packages[*]}" ] || rm -rf --one-file-system "$root"

inside() {
  chroot "$root" /usr/bin/env -i PATH=/usr/sbin:/usr/bin:/sbin:/bin LC_ALL=C.UTF-8 \
    DEBIAN_FRONTEND=noninteractive "$@"
}

if [ -d "$root" ]; then
  mount_root "$root"
else
  rm -f "$folder/packages"
  mkdir "$root"
  make_root "$root" "$PWD/build/bookworm.tar"
  inside dpkg --add-architecture "$architecture"
  inside apt-get --quiet update
  inside apt-get --quiet --yes --no-install-recommends install "${packages[@]}"
  echo "${packages[*]}" >"$folder/packages"
fi
mkdir -p "$root/source"
mount --bind "$PWD" "$root/source"
mount -t tmpfs tmpfs "$root/dev/shm"

build=/source/build/$architecture/tree
inside cmake -S /source -B "$build" -G Ninja \
  -DCMAKE_TOOLCHAIN_FILE="/source/cmake/toolchain-$architecture.cmake"
inside cmake --build "$build" --target qorn_account account_test account_library_test \
  account_stress_test qorn_platform_test qorn_scenario_test
for part in platform core_fw/account tests; do
  # What was not built is slow under qemu, or needs programs.
  inside ctest --test-dir "$build/$part" --parallel "$(nproc)" --output-on-failure --no-tests=error \
    --progress --exclude-regex _NOT_BUILT
done
