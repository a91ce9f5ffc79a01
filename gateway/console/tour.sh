# For ./dev, which sources it: a development cloud, gateways and a bus of the script's own, and the tour of
# a gateway on a bus.

# Writes the configuration of a gateway with the storage folder $1, the address $2 and the device
# name $3 for the cloud at $http and $https.
write_config() {
  cat <<XML
<?xml version="1.0" encoding="UTF-8"?>
<config>
  <qorn_storage_path>$1/</qorn_storage_path>
  <account_db_path>account.db</account_db_path>
  <OAuth_AsClient_app_name>qorn-gateway</OAuth_AsClient_app_name>
  <OAuth_AsClient_app_id>gateway-client</OAuth_AsClient_app_id>
  <OAuth_AsClient_app_secret>gateway-secret</OAuth_AsClient_app_secret>
  <account_device_type_code>HGW</account_device_type_code>
  <account_device_model_id>QG-1</account_device_model_id>
  <account_device_physical_address_text>$2</account_device_physical_address_text>
  <account_service>ACCOUNT</account_service>
  <account_server_type>NTS</account_server_type>
  <account_zep_auth_url>$http</account_zep_auth_url>
  <account_user_portal_url>$https</account_user_portal_url>
  <account_qor_device_name>$3</account_qor_device_name>
  <account_enable_MIRLO_network_setting>on</account_enable_MIRLO_network_setting>
  <gateway_durable_storage>on</gateway_durable_storage>
</config>
XML
}

# PROCESS: it ends with this script.
started=()
end_with_this() {
  started+=("$1")
  trap 'kill "${started[@]}" 2>/dev/null || true' EXIT
}

# Starts the development cloud on free ports; sets $http, $https and $api.
start_cloud() {
  local kind url
  coproc CLOUD { exec "$bin/qorn-devcloud" --port 0 --https-port 0 --print-urls "$@"; }
  end_with_this "$CLOUD_PID"
  http='' https='' api=''
  while [ -z "$http" ] || [ -z "$https" ] || [ -z "$api" ]; do
    read -r kind url <&"${CLOUD[0]}" || fail "the development cloud did not start"
    case "$kind" in http) http=$url ;; https) https=$url ;; api) api=$url ;; esac
  done
}

# Runs a gateway with the device name $1 and the address $2 in a folder of its own under $folder.
start_gateway() {
  local home=$folder/$1
  (umask 077 && mkdir -p "$home/data" && write_config "$home/data" "$2" "$1" >"$home/config.xml")
  say "Configuration: $home/config.xml   Log: $home/gateway.log"
  "$bin/qorn-gateway" --config "$home/config.xml" --log "$home/gateway.log" "${@:3}"
}

# Starts a bus of this script's own; sets $bus. Ctrl-C is for the console alone.
start_bus() {
  local ready
  exec {ready}< <(trap '' INT; exec dbus-daemon --session --nofork --nopidfile --print-address \
    2>"$folder/bus.log")
  end_with_this $!
  read -r bus <&"$ready" || fail "the bus did not start: $(cat "$folder/bus.log")"
  bus=${bus%,guid=*}
}

# Shows and runs a command of qornctl.
ctl() {
  printf '$ qornctl%s\n' "$(printf ' %q' "$@")"
  "$bin/qornctl" --bus "$bus" "$@"
}

# The gateway Home as a service on the bus, with alice, and what others do with it.
tour_of_the_bus() {
  local gateway watcher users=$folder/users heard=$folder/heard
  say "Tour of a gateway on a bus"
  start_gateway Home 02-00-5E-10-00-01 >/dev/null <<'END'
expect success request-code alice@example.com
expect success create-user alice@example.com $code
END
  "$bin/qorn-gateway" --config "$folder/Home/config.xml" --log "$folder/Home/gateway.log" \
    --daemon --bus "$bus" >/dev/null &
  gateway=$!
  end_with_this "$gateway"
  until "$bin/qornctl" --bus "$bus" get-session-lifetime >/dev/null 2>&1; do
    kill -0 "$gateway" 2>/dev/null || fail "the gateway has ended"
    sleep 0.1
  done

  say "1. Its users."
  ctl users | tee "$users"
  grep --quiet '^alice@example.com ' "$users" || fail "alice is missing"

  say "2. While one qornctl watches, another signs alice in."
  "$bin/qornctl" --bus "$bus" watch 60 >"$heard" &
  watcher=$!
  end_with_this "$watcher"
  until grep --quiet kEventAccountSignInAlt "$heard"; do
    kill -0 "$watcher" 2>/dev/null || fail "no sign-in was seen"
    ctl sign-in-alt alice@example.com ''  # Again, if the other was not there yet.
    sleep 0.2
  done
  printf '$ qornctl watch 60\n'
  cat "$heard"

  say "3. The gateway ends in order."
  kill "$gateway"
  wait "$gateway" || fail "the gateway ended with status $?"
}
