#!/bin/sh
# run.sh SOURCE_FOLDER WORK_FOLDER SCRIPT...: fetches what package-lock.json names, once, and runs a script of this folder.
# Ends with 77 where there is no browser or no Node.js.
set -eu
source=$1
work=$2
shift 2
command -v node >/dev/null && command -v npm >/dev/null || { echo "no Node.js here"; exit 77; }
[ -x "${QUILLO_CHROMIUM:-/usr/bin/chromium}" ] || { echo "no Chromium here"; exit 77; }
mkdir -p "$work"
cd "$work"
cp "$source"/*.mjs "$source/package.json" .
if ! cmp -s "$source/package-lock.json" installed-lock.json; then
    cp "$source/package-lock.json" package-lock.json
    npm ci --no-audit --no-fund --loglevel=error
    cp package-lock.json installed-lock.json
fi
QUILLO_OUTPUT=$work exec node "$@"
