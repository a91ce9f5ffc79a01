# For a script that has a Debian root in $root: commands inside it, the development cloud, and what the
# service manager does for the gateway's service.
credentials=/run/credentials/qorn-gateway.service

inside() { chroot "$root" /usr/bin/env -i PATH=/usr/sbin:/usr/bin:/sbin:/bin LC_ALL=C.UTF-8 "$@"; }
as() { # USER COMMAND...
  inside setpriv --reuid "$1" --regid "$(inside id -g "$1")" --init-groups "${@:2}"
}
apt_get() {
  inside DEBIAN_FRONTEND=noninteractive apt-get --yes --quiet --no-install-recommends "$@" 2>&1
}
mode() { inside stat -c '%a %U:%G' "$1"; }

# Starts the development cloud; sets $http and $https. It ends with this script.
start_cloud() {
  coproc CLOUD { as qorn qorn-devcloud --port 0 --https-port 0 --print-urls; }
  { read -r _ http && read -r _ https; } <&"${CLOUD[0]}" || true
}
fill_in_config() {
  sed -i -E "s#(<account_zep_auth_url>)[^<]*#\1$http#; s#(<account_user_portal_url>)[^<]*#\1$https#
    s#replace-with-#test-#" "$root/etc/qorn/config.xml"
}
# Hands the gateway what LoadCredential= of its unit names, as the service manager does.
load_credentials() {
  local name file
  inside install -d -m 500 -o qorn "$credentials"
  while IFS=: read -r name file; do
    inside install -m 400 -o qorn "$file" "$credentials/$name"
  done < <(sed -n 's/^LoadCredential=//p' "$root/lib/systemd/system/qorn-gateway.service")
}
