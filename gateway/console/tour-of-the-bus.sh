# For ./dev run: a bus, and the part of the tour that shows a gateway on it. Uses what dev has.

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
