# make_root FOLDER CACHE: a clean Debian of this machine's mirror and architecture in FOLDER, which
# is debootstrapped once and unpacked from CACHE from then on.
make_root() {
  local mirror
  mirror=$(apt-get indextargets --format '$(ORIGIN) $(CODENAME) $(REPO_URI)' 'Identifier: Packages' |
    sed -nE 's/^Debian bookworm (http.*)$/\1/p' | head -n 1)
  [ -n "$mirror" ] || { echo 'apt of this machine has no http mirror of Debian bookworm' >&2; return 1; }
  if [ ! -f "$2" ]; then
    debootstrap --variant=minbase bookworm "$1" "$mirror" >"$2.log" 2>&1 || { tail "$2.log" >&2; return 1; }
    chroot "$1" apt-get clean
    tar --create --file "$2.new" --numeric-owner --one-file-system -C "$1" .
    mv "$2.new" "$2"
  else
    tar --extract --file "$2" --numeric-owner -C "$1"
  fi
  mount_root "$1"
}

mount_root() { # FOLDER
  mount -t proc proc "$1/proc"
  cp /etc/resolv.conf "$1/etc/resolv.conf"
}

# in_new_root SCRIPT ARGUMENT...: runs "SCRIPT --inside ROOT ARGUMENT..." and exits with its status. Mounts
# and processes end with the namespaces that it runs in, and the folder ROOT with it.
in_new_root() {
  mkdir -p build/clean-root
  root=$(mktemp -d "$PWD/build/clean-root/XXXXXX")
  trap 'rm -rf --one-file-system "$root"' EXIT
  # unshare does not listen to SIGTERM.
  timeout --foreground --signal KILL 600 \
    unshare --mount --pid --fork --kill-child "$1" --inside "$root" "${@:2}"
  exit
}

prepare_root() { # FOLDER: a clean Debian whose packages start nothing, with a folder for packages
  chmod 755 "$1"
  make_root "$1" "$PWD/build/bookworm.tar"
  install -m 755 /dev/stdin "$1/usr/sbin/policy-rc.d" <<<$'#!/bin/sh\nexit 101'
  mkdir "$1/root/packages"
}
