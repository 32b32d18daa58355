#!/usr/bin/env bash
# Installs, from Debian's packages, whatever the build and the tests need and
# is not there yet. Non-interactive and idempotent: when everything is present
# it only asks dpkg and returns.
#   scripts/setup.sh        the build and the tests
#   scripts/setup.sh fuzz   also clang and its libFuzzer runtime, for the
#                           fuzzing build (-DQUARRIX_FUZZ=ON)
set -euo pipefail

packages=(
  g++ cmake make
  flex bison
  libboost-dev libboost-thread-dev libboost-date-time-dev
  libgtest-dev libgmock-dev libbenchmark-dev
)
for variant in "$@"; do
  case $variant in
    fuzz) packages+=(clang libclang-rt-14-dev) ;;
    *) echo "setup: unknown build variant '$variant'" >&2; exit 1 ;;
  esac
done

missing=()
for p in "${packages[@]}"; do
  if ! dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q 'install ok installed'; then
    missing+=("$p")
  fi
done

[ ${#missing[@]} -eq 0 ] && exit 0

echo "setup: installing ${missing[*]}"
sudo=""
if [ "$(id -u)" -ne 0 ]; then
  if command -v sudo >/dev/null 2>&1; then sudo="sudo"; else
    echo "setup: missing packages (${missing[*]}) and not root" >&2; exit 1
  fi
fi
export DEBIAN_FRONTEND=noninteractive
$sudo apt-get update -qq
$sudo apt-get install -y -qq --no-install-recommends "${missing[@]}" >/dev/null
