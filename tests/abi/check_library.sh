#!/usr/bin/env bash
# The shared object's boundary: it exports exactly the names of the version
# script, each under its version, and needs nothing at run time beyond libc,
# libm and libpthread.
set -u
lib="$1"
map="$2"
fail=0

needed=$(readelf -d "$lib" | sed -n 's/.*(NEEDED).*\[\(.*\)\]/\1/p')
for n in $needed; do
  case "$n" in
    libc.so.6|libm.so.6|libpthread.so.0) ;;
    *) echo "needs $n at run time"; fail=1 ;;
  esac
done

soname=$(readelf -d "$lib" | sed -n 's/.*(SONAME).*\[\(.*\)\]/\1/p')
[ "$soname" = "libkrm.so.1" ] || { echo "SONAME is '$soname'"; fail=1; }

# Names in the map, by version node.
expected=$(awk '
  /^[A-Za-z0-9_.]+ *\{/ { node=$1; next }
  /global:|local:/ { next }
  /^ *[A-Za-z_][A-Za-z0-9_.]* *;/ { gsub(/[ ;]/, ""); if ($0 != "*") print $0 "@@" node }
' "$map" | sort)
actual=$(nm -D --defined-only "$lib" | awk '$2 != "A" { print $3 }' | sort)

if [ "$expected" != "$actual" ]; then
  echo "exports differ from the version script (< expected, > actual):"
  diff <(echo "$expected") <(echo "$actual")
  fail=1
fi

count=$(echo "$actual" | grep -c .)
if [ "$fail" -eq 0 ]; then
  echo "library boundary ok: $count exported names, needs: $(echo $needed)"
fi
exit $fail
