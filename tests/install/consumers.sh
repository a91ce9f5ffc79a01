#!/usr/bin/env bash
# consumers.sh BUILD: others build against what the packages of a build install: the component
# itself with the platform of somewhere else, and the example of another component.
set -euo pipefail
. tests/install/check.sh
build=$1
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
libdir=lib/$(dpkg-architecture -qDEB_HOST_MULTIARCH)

# The platform alone, elsewhere, and the component built on it.
build_on_external_platform() {
  cmake --install "$build" --prefix "$work/elsewhere" --component platform &&
    cmake --install "$build" --prefix "$work/elsewhere" --component dev &&
    rm -r "$work/elsewhere/include/qorn/core_fw/account" &&
    cmake -S . -B "$work/external" -G Ninja -DCMAKE_BUILD_TYPE=Debug -DQORN_BUILD_TESTS=OFF \
      -DQORN_PLATFORM=external -DCMAKE_PREFIX_PATH="$work/elsewhere" &&
    cmake --build "$work/external" --target qorn_account qorn-gateway
}
answer_on_external_platform() {
  printf 'expect success get-session-lifetime\n' |
    "$work/external/bin/qorn-gateway" --log "$work/log" | grep 'get-session-lifetime: 1' >/dev/null
}
no_platform_built() { ! compgen -G "$work/external/lib/libqorn_platform*"; }
# Without -q: a grep that ends early would end its writer by a signal, which counts as a failure.
uses_elsewhere() { ldd "$1" | grep -F "libqorn_platform.so.1 => $work/elsewhere/$libdir/" >/dev/null; }

check 'the component builds with QORN_PLATFORM=external' build_on_external_platform
check 'that build has no platform of its own' no_platform_built
check 'its component is bound to the platform elsewhere' uses_elsewhere "$work/external/lib/libqorn_account.so"
check 'its gateway is bound to the platform elsewhere' uses_elsewhere "$work/external/bin/qorn-gateway"
check 'its gateway loads its component, which answers' answer_on_external_platform

# The packages, unpacked: what a developer of another component has.
root=$work/root
for package in "$build"/*.deb; do dpkg-deb -x "$package" "$root"; done
flags() { # PKG-CONFIG-OPTION...
  PKG_CONFIG_SYSROOT_DIR=$root PKG_CONFIG_LIBDIR=$root/usr/$libdir/pkgconfig pkg-config "$@"
}
build_with_cmake() {
  cmake -S examples/presence_watch -B "$work/cmake" -G Ninja -DCMAKE_PREFIX_PATH="$root/usr" &&
    cmake --build "$work/cmake"
}
build_with_pkg_config() {
  # shellcheck disable=SC2046
  g++ -std=c++20 -shared -fPIC examples/presence_watch/presence_watch.cc -o "$work/by-pkg-config.so" \
    $(flags --cflags --libs qorn-account)
}
# COMPONENT: runs beside the packages' own component and hears its events.
watches() {
  printf '<config><qorn_storage_path>%s/</qorn_storage_path><account_db_path>a.db</account_db_path></config>' \
    "$work" >"$work/config.xml"
  rm -f "$work/log"
  LD_LIBRARY_PATH=$root/usr/$libdir "$root/usr/bin/qorn-gateway" --config "$work/config.xml" \
    --component "$(flags --variable=componentdir qorn-account)/libqorn_account.so" \
    --component "$1" --log "$work/log" <<<'expect success sign-in-alt qornsystem mivu5830' &&
    grep 'presence: qornsystem is home' "$work/log"
}
build_with_the_client() {
  sed -n '/^```cpp$/,/^```$/ { /^```/d; p }' docs/bus.md >"$work/users.cc"
  # shellcheck disable=SC2046
  g++ -std=c++20 "$work/users.cc" -o "$work/users" $(flags --cflags --libs qorn-client)
}
ask_without_a_bus() { LD_LIBRARY_PATH=$root/usr/$libdir DBUS_SYSTEM_BUS_ADDRESS=unix:path=$work/bus "$work/users"; }

all_headers() {
  (cd "$root/usr/include/qorn" && find . -name '*.h' -printf '#include "%P"\n') >"$work/all.cc"
  g++ -std=c++20 -Wall -Wextra -Wpedantic -Wconversion -Wshadow -Werror -fsyntax-only -MD -MF "$work/all.d" \
    -I"$root/usr/include/qorn" "$work/all.cc" &&
    not grep -E 'tinyxml|sqlite3|nlohmann|boost|curl|CLI' "$work/all.d"
}

check 'a component builds with find_package(QornAccount)' build_with_cmake
check 'it runs beside the account component' watches "$work/cmake/libpresence_watch.so"
check 'a component builds with pkg-config qorn-account' build_with_pkg_config
check 'it runs beside the account component too' watches "$work/by-pkg-config.so"
check 'the program of docs/bus.md builds with pkg-config qorn-client' build_with_the_client
check 'it says that there is no bus' [ "$(ask_without_a_bus 2>&1)" = \
  'the bus system cannot be reached: No such file or directory' ]
check 'all installed headers compile, without those of other packages' all_headers
[ "$failed" -eq 0 ]
