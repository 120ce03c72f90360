#!/usr/bin/env bash
# Runs each example program in a scratch directory and shows what it wrote.
set -u
bin="$(cd "$1" && pwd)"
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
cd "$work"
for prog in "$bin"/*; do
  [ -x "$prog" ] && [ -f "$prog" ] || continue
  name=$(basename "$prog")
  echo "=== $name"
  "$prog"
  status=$?
  for f in fort.* *.dat; do
    [ -f "$f" ] || continue
    echo "--- $f"
    cat "$f"
    rm -f "$f"
  done
  echo "--- exit status $status"
  echo
done
exit 0
