#!/usr/bin/env bash
# clean-root.sh BUILD: installs the packages of a build into a clean Debian 12, uses, upgrades,
# removes and purges them. Mounts and processes end with the namespaces that it runs in.
set -euo pipefail
. tests/install/debian.sh
[ "${1:-}" = --inside ] || in_new_root "$0" "$@"
. tests/install/check.sh
. tests/install/inside.sh
. tests/install/bus.sh
root=$2 build=$3
umask 022
patience=90  # seconds; only ends what hangs
trap 'exit 1' INT TERM

# All files but the package manager's own and the backups of the user database.
files() {
  find "$root" -xdev -printf '/%P %y %m %u:%g\n' | sort |
    grep -vE '^/((proc|run|root/packages|var/lib/(dpkg|apt)|var/cache|var/log/(apt|dpkg\.log))[/ ]|etc/[^/]*- )'
}

# Installs what the packages need first, so that whatever is left at the end is theirs.
install_dependencies() {
  local needed
  needed=$(apt_get install --simulate "${packages[@]}" |
    sed -nE '/^Inst (lib|python3-)?qorn-/d; s/^Inst ([^ ]+) .*/\1/p') || return 1
  # shellcheck disable=SC2086
  apt_get install logrotate systemd polkitd python3-pytest $needed
}

gateway() { # OPTION...
  as qorn qorn-gateway --config "$credentials/config.xml" --log /var/log/qorn/gateway.log "$@"
}

# The example of the page, with what the packages installed.
runs_the_example() {
  local folder=$root/tmp/example status=0
  install -d -m 777 "$folder"
  sed -n '/^```python$/,/^```$/ { /^```$/q; /^```/d; p }' docs/test-with-the-cloud.md >"$folder/test_example.py"
  as nobody env -C /tmp/example python3 -m pytest --basetemp=/tmp/example/base || status=$?
  rm -r "$folder"
  return "$status"
}

# Exits with 1 if there are warnings, and that certificates are not checked is one.
doctor() { inside qorn-gateway doctor || [ $? -eq 1 ]; }

# Makes the same packages with a higher version and another configuration.
make_next_version() {
  local package folder=$root/root/next
  for package in "$build"/*.deb; do
    rm -rf "$folder"
    dpkg-deb -R "$package" "$folder"
    sed -i -E 's/^(Version: .*)$/\1+next/; s/\(= ([^)]*)\)/(= \1+next)/g' "$folder/DEBIAN/control"
    [ ! -f "$folder/etc/qorn/config.xml" ] || echo '<!-- next -->' >>"$folder/etc/qorn/config.xml"
    dpkg-deb --root-owner-group -b "$folder" "$root/root/packages/next-$(basename "$package")" >/dev/null
  done
  rm -r "$folder"
}
# The command of the service's unit, as the service manager expands it.
service_command() {
  sed -nE '/^ExecStart=/,/[^\\]$/ { s/^ExecStart=//; s/\\$//
    s#[$][{]CREDENTIALS_DIRECTORY[}]#'"$credentials"'#; p }' \
    "$root/lib/systemd/system/qorn-gateway.service" | tr '\n' ' '
}
# The bus starts the unit by a name that the unit has once it is enabled.
bus_starts_the_enabled_unit() {
  local name activation=$root/usr/share/dbus-1/system-services/org.qorn.Accounts1.service
  name=$(sed -n 's/^SystemdService=//p' "$activation")
  not inside test -e "/lib/systemd/system/$name" && inside systemctl enable qorn-gateway &&
    equal /lib/systemd/system/qorn-gateway.service readlink "$root/etc/systemd/system/$name"
}
ends_without_a_bus() {
  local said status=0
  # shellcheck disable=SC2046
  said=$(as qorn $(service_command) 2>&1) || status=$?
  echo "$said"
  [ "$status" -eq 2 ] && [ "$(wc -l <<<"$said")" -eq 1 ] && [[ $said == *'bus system'* ]]
}
# Starts the service with that command and waits until it reports that it is ready; sets $service
# and $ready.
start_service() {
  exec {notify}< <(perl -MIO::Socket::UNIX -e '$| = 1; umask 0;
    my $socket = IO::Socket::UNIX->new(Type => SOCK_DGRAM, Local => $ARGV[0]) or die $!;
    print "listening\n"; $socket->recv(my $text, 4096); print "$text\n"' "$root/run/notify")
  read -r _ <&"$notify"
  # shellcheck disable=SC2046
  as qorn env NOTIFY_SOCKET=/run/notify $(service_command) >"$root/root/packages/service" 2>&1 &
  service=$!
  read -r -t "$patience" ready <&"$notify" || true
  rm "$root/run/notify"
}
turn_logs_over() {
  inside logrotate --force --state /root/packages/logrotate.state /etc/logrotate.d/qorn-gateway
  kill -HUP "$(inside pidof qorn-gateway)"
  for file in gateway.log audit.log; do
    timeout "$patience" sh -c "until [ -e $root/var/log/qorn/$file ]; do sleep 0.05; done" || return 1
    equal '600 qorn:qorn' mode "/var/log/qorn/$file" || return 1
    equal '600 qorn:qorn' mode "/var/log/qorn/$file.1" || return 1
  done
}
end_service() {
  kill -TERM "$(inside pidof qorn-gateway)"
  wait "$service"
}

prepare_root "$root"
cp "$build"/*.deb "$root/root/packages"
names=() packages=()
for package in "$build"/*.deb; do
  names+=("$(basename "${package%%_*}")")
  packages+=("/root/packages/$(basename "$package")")
done

check 'apt reads its lists' apt_get update
check 'apt finds every dependency' install_dependencies
before=$(files)
check 'apt installs the packages' apt_get install "${packages[@]}"
check 'the linker knows the platform' inside sh -c 'ldconfig -p | grep -q libqorn_platform.so.1'
check '/var/lib/qorn is the gateway'"'"'s alone' equal '700 qorn:qorn' mode /var/lib/qorn
check '/var/log/qorn is the gateway'"'"'s alone' equal '700 qorn:qorn' mode /var/log/qorn
check 'config.xml is root'"'"'s alone' equal '600 root:root' mode /etc/qorn/config.xml
check 'the gateway itself does not read it' as qorn sh -c '! test -r /etc/qorn/config.xml'
check 'the user qorn cannot log in' equal /usr/sbin/nologin inside sh -c 'getent passwd qorn | cut -d: -f7'
# --threshold takes tenths.
check 'the service is exposed by 1.5 at most' inside systemd-analyze security --offline=true \
  --threshold=15 /lib/systemd/system/qorn-gateway.service
check 'systemd reads the unit without a complaint' equal '' \
  inside sh -c 'systemd-analyze verify --man=no qorn-gateway.service 2>&1'
for program in qorn-gateway qorn-devcloud qornctl; do
  check "$program --help" as nobody "$program" --help
  check "the manual has $program(1)" inside gzip -t "/usr/share/man/man1/$program.1.gz"
done
check 'bash completes qornctl' inside bash -c \
  '. /usr/share/bash-completion/completions/qornctl && complete -p qornctl'
check 'zsh finds its completions' inside grep -q '^#compdef qornctl' \
  /usr/share/zsh/vendor-completions/_qornctl

check 'pytest has a cloud and a gateway' runs_the_example
start_cloud
check 'the cloud starts as qorn' [ -n "${https:-}" ]
fill_in_config
load_credentials
check 'the gateway creates a user and signs in, with the installed configuration' \
  gateway --audit /var/log/qorn/audit.log <tests/install/commands.qorn
check 'the database is the gateway'"'"'s alone' equal '600 qorn:qorn' mode /var/lib/qorn/account.db
check 'the log is the gateway'"'"'s alone' equal '600 qorn:qorn' mode /var/log/qorn/gateway.log
check 'the doctor finds nothing bad' doctor
check 'it counts its calls' gateway --metrics <<<metrics
check 'without a bus the service ends with one line and status 2' ends_without_a_bus
start_bus
start_service
check 'the service starts as its unit says, and says when it is ready' equal READY=1 echo "$ready"
check 'logrotate and SIGHUP give it new files' turn_logs_over
use_bus
end_service && status=0 || status=$?
check 'SIGTERM ends it in order' [ "$status" -eq 0 ]
end_bus
check 'once it is enabled, the bus can start it' bus_starts_the_enabled_unit

make_next_version
# As an earlier version left it, for the group to read.
inside sh -c 'chown root:qorn /etc/qorn/config.xml && chmod 640 /etc/qorn/config.xml'
edited=$(sha256sum <"$root/etc/qorn/config.xml")
check 'apt upgrades the packages' apt_get --option Dpkg::Options::=--force-confold \
  install "${packages[@]/packages\//packages/next-}"
check 'the version is the new one' inside sh -c "dpkg-query -W -f '\${Version}' qorn-gateway | grep -q next"
check 'the edited configuration is kept' equal "$edited" sha256sum <"$root/etc/qorn/config.xml"
check 'and is root'"'"'s alone again' equal '600 root:root' mode /etc/qorn/config.xml
check 'the accounts are kept' gateway <<<'expect success get-user-uuid-from-user-id alice@example.com'

check 'apt removes the packages' apt_get remove "${names[@]}"
check 'the programs are gone' not inside sh -c 'ls /usr/bin/qorn-* /usr/lib/*/qorn /usr/lib/*/libqorn*'
check 'the accounts outlive removal' equal '600 qorn:qorn' mode /var/lib/qorn/account.db
check 'so does the configuration' equal '600 root:root' mode /etc/qorn/config.xml
check 'apt purges the packages' apt_get purge qorn-gateway
check 'nothing is left, nothing else has gone' diff <(echo "$before") <(files)
check 'the user qorn is kept, so that its number goes to nobody else' inside getent passwd qorn
[ "$failed" -eq 0 ]
