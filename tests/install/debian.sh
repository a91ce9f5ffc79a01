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
