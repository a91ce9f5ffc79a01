#!/bin/sh
# The tables of operations.md, events.md and bus.md against the interface, the table of operations and the
# texts of the results. Run in the repository's root; shows the lines that differ.
set -eu
folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT
header=core_fw/account/include/account_manager.h
same() {
  [ -s "$folder/code" ] && diff "$folder/code" "$folder/doc" || { echo "$1 differs" >&2; exit 1; }
}

sed -nE 's/^  virtual (AccountResult|int) (\w+)\(.*/\2/p' $header >"$folder/operations"
awk '{ print NR - 1, $1 }' "$folder/operations" >"$folder/code"
sed -nE 's/^\| ([0-9]+) \| `([A-Z]\w+)` \|.*/\1 \2/p' docs/operations.md >"$folder/doc"
same "operations.md, places"

# The numbers below 20 in the comment before an operation are its results.
awk '/^  \/\// { text = text $0; next }
  /^  virtual (AccountResult|int) / {
    if (text ~ /Like CreateUserRequest/) text = "1"
    gsub(/[^0-9]+/, " ", text)
    split("", given)
    for (n = split(text, numbers, " "); n > 0; n--) given[numbers[n] + 0] = 1
    sub(/\(.*/, "", $3)
    line = $3
    for (n = 0; n < 20; n++) if (n in given) line = line " " n
    print line
  }
  { text = "" }' $header >"$folder/code"
sed -nE 's/^\| [0-9]+ \| `([A-Z]\w+)` \|.*\| ([0-9 ]+)(,[^|]*)? ?\|$/\1 \2/p' docs/operations.md |
  sed 's/ *$//' >"$folder/doc"
same "operations.md, results of the operations"

# The state of the network setting is no result.
sed -i -E 's/^(GetNetworkSettingStatus).*/\1/' "$folder/doc"
tr -d '\n' <gateway/operations/operations.cc | grep -oE 'Describe<&Accounts::[^{]*\{[0-9, ]*\}' |
  sed -E 's/^[^(]*\( *"(\w+)".*\{([0-9, ]*)\}$/\1 \2/; s/,//g; s/ *$//' >"$folder/code"
same "an operation's name or results in the table"

tr -s '\n ' ' ' <gateway/operations/operations.cc | grep -oE '"\w+", k\w+, Right::k\w+' |
  sed -E 's/"(\w+)", k(\w+), Right::k(.*)/\2.\1 \L\3/; s/signin/sign-in/' | sort >"$folder/code"
sed -nE '/\.(List|Metrics)/d; s/^\| `(\w+\.\w+)` \| ([a-z-]+) \|.*\|.*\|$/\1 \2/p' docs/bus.md | sort >"$folder/doc"
same "bus.md, rights"

for table in operations:kAccount events:kEventAccount; do
  page=docs/${table%:*}.md constant="${table#*:}[A-Z]\w+"
  sed -nE "s/^  ($constant) = ([0-9]+),.*/\2 \1/p" $header >"$folder/code"
  sed -nE "s/^\| ([0-9]+) \| \`($constant)\` \|.*/\1 \2/p" "$page" >"$folder/doc"
  same "$page"
done
