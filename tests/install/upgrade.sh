#!/usr/bin/env bash
# upgrade.sh BUILD RELEASED: in a clean Debian 12, upgrades a gateway in use from the released version's
# packages to those of a build, goes back, and upgrades again. Accounts, configuration and what the
# service manager knows must stay.
set -euo pipefail
. tests/install/debian.sh
[ "${1:-}" = --inside ] || in_new_root "$0" "$@"
. tests/install/check.sh
. tests/install/inside.sh
root=$2 build=$3 released=$4
umask 022
trap 'exit 1' INT TERM

new=(libqorn-platform libqorn-account qorn-gateway)
copy() { # FROM...: the packages' paths inside the root
  cp "$@" "$root/root/packages"
  printf '/root/packages/%s\n' "${@##*/}"
}
change_to() { # PACKAGE...
  apt_get --option Dpkg::Options::=--force-confold --allow-downgrades install "$@"
}
# What the gateway knows of its users, read by the version that is installed.
accounts() { gateway --json <<<$'users\nfriends'; }
gateway() { # OPTION...: with the configuration as the installed version's service reads it
  local config=/etc/qorn/config.xml
  if grep -q '^LoadCredential=' "$root/lib/systemd/system/qorn-gateway.service"; then
    load_credentials
    config=$credentials/config.xml
  fi
  as qorn qorn-gateway --config "$config" --log /var/log/qorn/gateway.log \
    --audit /var/log/qorn/audit.log "$@"
}
signs_in() { # NICKNAME
  gateway <<END
expect success get-user-uuid-from-user-id alice@example.com
expect success request-code alice@example.com
expect success sign-in alice@example.com \$code
expect success set-user-info-by-type \$user_uuid 201 "$1"
END
}
# check_kept WHEN MODE: after a change of version.
check_kept() {
  check "$1: the configuration is as somebody edited it" equal "$edited" \
    sha256sum <"$root/etc/qorn/config.xml"
  check "$1: its mode and owner" equal "$2" mode /etc/qorn/config.xml
  check "$1: the service is enabled" equal enabled inside systemctl is-enabled qorn-gateway
  check "$1: no other service state is left behind" equal /lib/systemd/system/qorn-gateway.service \
    readlink "$root/etc/systemd/system/multi-user.target.wants/qorn-gateway.service"
  check "$1: the database is the gateway's alone" equal '600 qorn:qorn' mode /var/lib/qorn/account.db
  check "$1: the accounts" equal "$known" accounts
}

prepare_root "$root"
mapfile -t released_packages < <(copy "$released"/*.deb)
mapfile -t packages < <(for name in "${new[@]}"; do copy "$build/${name}"_*.deb; done)
mapfile -t cloud < <(copy "$build"/qorn-devcloud_*.deb)
check 'apt reads its lists' apt_get update
check 'apt installs the released version' apt_get install systemd "${cloud[@]}" "${released_packages[@]}"
start_cloud
fill_in_config
inside systemctl enable qorn-gateway 2>/dev/null
check 'it creates a user and signs in' gateway <tests/install/commands.qorn
check 'and another, who are friends' gateway <<'END'
expect success request-code bob@example.com
expect success create-user bob@example.com $code
expect success get-user-uuid-from-user-id alice@example.com
expect success add-friend-to-db $user_uuid bob@example.com guid-1 Bob 02-00-5E-10-00-02 peer-1
END
known=$(accounts)
edited=$(sha256sum <"$root/etc/qorn/config.xml")
echo "$known"

check 'apt upgrades it' change_to "${packages[@]}"
check_kept upgraded '600 root:root'
check 'upgraded: it signs in' signs_in 'Alice, new'
known=$(accounts)
inside install -m 600 -o qorn -g qorn /dev/stdin /var/lib/qorn/keeper.json <<<'{"version":1}'
check 'apt goes back' change_to "${released_packages[@]}"
check_kept 'gone back' '640 root:qorn'
check 'gone back: it signs in' signs_in 'Alice, old'
known=$(accounts)
check 'apt upgrades it again' change_to "${packages[@]}"
check_kept 'upgraded again' '600 root:root'
check 'upgraded again: it signs in' signs_in Alice
[ "$failed" -eq 0 ]
