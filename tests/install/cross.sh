#!/usr/bin/env bash
# cross.sh ARCHITECTURE test|package PACKAGE...: cross-builds for an architecture of Debian's (arm64 or
# armhf), and runs the tests under qemu or makes the Debian packages. It builds in a Debian root of its
# own, so that this machine gets no foreign packages; the root is kept. PACKAGE: the libraries'
# development packages.
set -euo pipefail
if [ "${1:-}" != --inside ]; then
  exec unshare --mount --pid --fork --kill-child "$0" --inside "$@"
fi
shift
. tests/install/debian.sh
architecture=$1
action=$2
shift 2
folder=$PWD/build/$architecture
root=$folder/root
# Programs that the tests start are this machine's.
packages=(ca-certificates cmake "crossbuild-essential-$architecture" dbus-daemon file lintian mandoc
  ninja-build pkg-config qemu-user-static "${@/%/:$architecture}")
mkdir -p "$folder"
# A root that was not finished, or has other packages, is made anew.
[ "$(cat "$folder/packages" 2>/dev/null)" = "${packages[*]}" ] || rm -rf --one-file-system "$root"

inside() {
  chroot "$root" /usr/bin/env -i --chdir=/source PATH=/usr/sbin:/usr/bin:/sbin:/bin LC_ALL=C.UTF-8 \
    DEBIAN_FRONTEND=noninteractive DEB_HOST_ARCH="$architecture" "$@"
}

if [ -d "$root" ]; then
  mount_root "$root"
else
  rm -f "$folder/packages"
  mkdir "$root"
  make_root "$root" "$PWD/build/bookworm.tar"
  mkdir "$root/source"
  inside dpkg --add-architecture "$architecture"
  inside apt-get --quiet update
  inside apt-get --quiet --yes --no-install-recommends install "${packages[@]}"
  echo "${packages[*]}" >"$folder/packages"
fi
mount --bind "$PWD" "$root/source"
mount -t tmpfs tmpfs "$root/dev/shm"

# One build for both, so that what is tested is what is packaged.
tree=build/$architecture/package
multiarch=$(inside dpkg-architecture --host-arch "$architecture" --query DEB_HOST_MULTIARCH)
programs=(qorn_account qorn_metrics qorn-client qorn-gateway qornctl qorn-devcloud)
tests=(account_test account_library_test account_stress_test qorn_backup_test qorn_bus_service_test
  qorn_event_manager_test qorn_gateway_test qorn_keeper_test qorn_platform_test qorn_scenario_test)

run_tests() {
  local part
  inside cmake --build "$tree" --target "${tests[@]}"
  for part in platform core_fw/account gateway tests; do
    # What was not built is slow under qemu, or needs programs.
    inside ctest --test-dir "$tree/$part" --parallel "$(nproc)" --output-on-failure --no-tests=error \
      --progress --exclude-regex _NOT_BUILT
  done
}

inside cmake --preset package -B "$tree" -DQORN_BUILD_TESTS=ON \
  -DCMAKE_TOOLCHAIN_FILE="cmake/toolchain-$architecture.cmake" -DCMAKE_INSTALL_LIBDIR="lib/$multiarch" \
  -DCPACK_DEBIAN_PACKAGE_ARCHITECTURE="$architecture"
inside cmake --build "$tree" --target "${programs[@]}"
if [ "$architecture" = armhf ]; then
  # The tests are not looked at: GoogleTest's library imports the short functions.
  inside tests/install/check-time.sh "/usr/lib/$multiarch/libc.so.6" \
    "$tree"/lib/lib{qorn_account,qorn_metrics,qorn_platform,qorn-client}.so \
    "$tree"/bin/{qorn-gateway,qornctl,qorn-devcloud}
fi
case $action in
  test) run_tests ;;
  package) inside packaging/make-packages.sh "$tree" ;;
esac
