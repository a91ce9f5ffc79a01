#!/bin/sh
# The folders of each program include each other in one direction only: tsort names the folders of a
# circle and fails. Run in the repository's root.
set -eu
for program in gateway devcloud; do
  grep -rEo "^#include \"$program/([a-z_]+/)?" $program --include='*.cc' --include='*.h' \
    --exclude-dir=tests |
    sed -E "s|^$program/([a-z_]+/)?[^:]*:#include \"$program/([a-z_]+/)?|./\1 ./\2|" |
    tsort >/dev/null
done
