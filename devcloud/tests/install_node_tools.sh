#!/usr/bin/env bash
# Installs what package.json names into build/node, unless it is there. Run in the repository's root.
set -euo pipefail
wanted=devcloud/tests/package.json folder=build/node
! cmp --silent "$wanted" "$folder/installed" || exit 0
mkdir -p "$folder"
cp "$wanted" "$folder/package.json"
npm install --prefix "$folder" --ignore-scripts --no-audit --no-fund --no-package-lock
cp "$wanted" "$folder/installed"
