# For clean-root.sh: the system's bus, and the gateway on it as its callers see it.

start_bus() {
  mkdir -p "$root/run/dbus"
  inside dbus-daemon --system >/dev/null 2>&1 # Forks as soon as it takes connections.
}
end_bus() { kill "$(cat "$root/run/dbus/pid")"; }

ctl() { as "$1" qornctl "${@:2}"; } # USER WORD...

# USER WORD...: the gateway refuses the command to this user.
refuses() {
  local said
  said=$(ctl "$@" 2>&1 </dev/null) && return 1
  echo "$said"
  grep --quiet 'not allowed' <<<"$said"
}

# Not even root.
nobody_else_owns_the_name() {
  local user said
  for user in root games nobody; do
    said=$(as "$user" busctl call org.freedesktop.DBus /org/freedesktop/DBus org.freedesktop.DBus \
      RequestName su org.qorn.Accounts1 4 2>&1) && return 1
    equal 'Call failed: Access denied' echo "$said" || return 1
  done
}

# Sends a signal of this name until all of the users have heard it.
until_heard() { # NAME USER...
  local user
  for user in "${@:2}"; do
    timeout "$patience" sh -c "until grep --quiet 'member=$1' $root/root/packages/heard-by-$user; do
      chroot $root dbus-send --system --type=signal /test org.qorn.Test.$1; sleep 0.05; done" || return 1
  done
}
# A signal of our own behind the gateway's: whoever has heard that has heard all before it.
signals_are_for_the_group() {
  local user
  for user in games nobody; do
    as "$user" dbus-monitor --system "type='signal',sender='org.qorn.Accounts1'" \
      "type='signal',interface='org.qorn.Test'" >"$root/root/packages/heard-by-$user" 2>&1 &
  done
  until_heard Ready games nobody && ctl root sign-in-alt alice@example.com '' &&
    until_heard End games nobody || return 1
  grep --quiet 'member=SignedInLocally' "$root/root/packages/heard-by-games" &&
    not grep 'org.qorn.Accounts1' "$root/root/packages/heard-by-nobody"
}

# The rule of docs/bus.md, for nobody in place of ann: polkitd reads it when it comes.
rule_lets_nobody_look() {
  local rule=$root/etc/polkit-1/rules.d/50-qorn.rules status=0
  sed -n '/^```js$/,/^```$/ { /^```/d; s/"ann"/"nobody"/; p }' docs/bus.md >"$rule"
  timeout "$patience" sh -c \
    "until chroot $root setpriv --reuid nobody --regid nogroup --clear-groups qornctl users 2>/dev/null; do sleep 0.2; done" &&
    refuses nobody sign-in-alt alice@example.com '' || status=1
  rm "$rule"
  return "$status"
}

use_bus() {
  inside adduser --quiet games qorn
  check 'over the bus root may do everything' ctl root <<'END'
set user alice@example.com
expect success get-user-uuid-from-user-id $user
expect success get-user-info-by-type $user_uuid 104
expect success set-user-info-by-type $user_uuid 201 Alice
expect success sign-in-alt $user ""
expect success sign-out $session_id
expect kAccountZepServerFailure create-user bob@example.com wrong
users
END
  check 'a member of the group qorn looks and signs in' ctl games <<'END'
users
expect success sign-in-alt alice@example.com ""
expect success sign-out $session_id
END
  check 'but creates no user' refuses games create-user bob@example.com wrong
  check 'nobody may not even look' refuses nobody users
  check 'signals are for the group' signals_are_for_the_group
  check 'no other user can own the name' nobody_else_owns_the_name
  check 'polkit knows the five actions' equal 5 as nobody sh -c 'pkaction | grep -c ^org.qorn.accounts1.'
  check 'a rule of polkit lets somebody look, and no more' rule_lets_nobody_look
}
