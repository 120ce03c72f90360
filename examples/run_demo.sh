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
  # perl runs it so that the shell adds no job-control line of its own.
  perl -e 'system(@ARGV); exit(($? & 127) ? 128 + ($? & 127) : $? >> 8)' "$prog"
  status=$?
  for f in fort.* *.dat; do
    [ -f "$f" ] || continue
    echo "--- $f"
    cat "$f"
    rm -f "$f"
  done
  if [ "$status" -gt 128 ]; then
    echo "--- ended by signal $((status - 128)) ($(kill -l $((status - 128))))"
  else
    echo "--- exit status $status"
  fi
  echo
done
exit 0
