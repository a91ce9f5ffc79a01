#!/usr/bin/env bash
# released.sh FOLDER: makes the packages of the last released version's gateway from its commit, without
# optimising, once. Exits with 3 where this clone does not have the commit.
set -euo pipefail
commit=0a527f1efb9c9ce96e939c5b1b78487fabac168e  # 0.1.0
folder=$(realpath -m "$1")
if [ "$(cat "$folder/commit" 2>/dev/null)" = "$commit" ]; then exit; fi
git rev-parse --git-dir >/dev/null
git cat-file -e "$commit^{commit}" 2>/dev/null || exit 3
rm -rf "$folder"
mkdir -p "$folder/source"
git archive "$commit" | tar --extract -C "$folder/source"
cd "$folder/source"
build() {
  cmake --preset package -DQORN_BUILD_TESTS=OFF -DCMAKE_BUILD_TYPE=None -DCMAKE_CXX_FLAGS=-O0 &&
    cmake --build --preset package --target qorn_account qorn-gateway &&
    SOURCE_DATE_EPOCH=$(dpkg-parsechangelog -l packaging/debian/changelog -S Timestamp) &&
    export SOURCE_DATE_EPOCH &&
    cpack --config build/package/CPackConfig.cmake -B build/package \
      -D CPACK_COMPONENTS_ALL='platform;account;gateway'
}
umask 022
build >"$folder/build.log" 2>&1 || {
  tail "$folder/build.log" >&2
  exit 1
}
mv build/package/*.deb ../
cd ..
rm -r source
echo "$commit" >commit
