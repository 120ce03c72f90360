#!/usr/bin/env bash
# Installs, through apt-get, whatever the build, the tests and the demo need
# and is not on this machine yet. Safe to run again: it does nothing when all
# is present.
set -euo pipefail

need=()
have_pkg() { dpkg-query -W -f='${Status}' "$1" 2>/dev/null | grep -q 'install ok installed'; }
for p in cmake ninja-build g++ g++-multilib gfortran googletest libgtest-dev \
         libbenchmark-dev libmpfr-dev clang libclang-rt-14-dev make; do
  have_pkg "$p" || need+=("$p")
done

if [ "${#need[@]}" -gt 0 ]; then
  echo "install-deps: installing ${need[*]}"
  SUDO=""
  [ "$(id -u)" -eq 0 ] || SUDO="sudo"
  $SUDO apt-get update -qq
  DEBIAN_FRONTEND=noninteractive $SUDO apt-get install -y -qq --no-install-recommends "${need[@]}"
fi
