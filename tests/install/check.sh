# For the scripts of this folder: one line per check, and whether all held.
failed=0

# check NAME COMMAND...: the command's output is shown only when it fails.
check() {
  local name=$1 output
  shift
  if output=$("$@" 2>&1); then
    printf 'good    %s\n' "$name"
  else
    printf 'FAILED  %s: %s\n%s\n' "$name" "$*" "$output"
    failed=$((failed + 1))
  fi
}

# equal WANTED COMMAND...: the command gives just this text.
equal() {
  local wanted=$1 given
  shift
  given=$("$@")
  [ "$given" = "$wanted" ] || {
    printf 'wanted: %s\ngiven:  %s\n' "$wanted" "$given"
    return 1
  }
}

not() { ! "$@"; }
