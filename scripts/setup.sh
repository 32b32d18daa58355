#!/usr/bin/env bash
# Installs, from Debian's packages, whatever the build and the tests need and
# is not there yet. Non-interactive and idempotent: when everything is present
# it only asks dpkg and returns.
#
#   scripts/setup.sh            the build and the test suite
#   scripts/setup.sh package    also pkg-config, for the tests that build the
#                               C++ example against the installed package with
#                               it (skipped without it)
#   scripts/setup.sh lp         also the CBC MIP solver, for the tests that
#                               solve written linear programs (skipped
#                               without it) and for scripts/compare
#   scripts/setup.sh fuzz       also clang and its libFuzzer runtime, for the
#                               fuzzing build (-DQUARRIX_FUZZ=ON)
#   scripts/setup.sh mpi        also OpenMPI (compilers' wrappers, headers and
#                               mpirun), for the multi-process build
#                               (-DQUARRIX_MPI=ON)
# Tools that only some tests or builds need are installed only when asked
# for, so that the plain set-up stays what every build needs.
set -euo pipefail

packages=(
  g++ cmake make
  flex bison
  libboost-dev libboost-thread-dev libboost-date-time-dev
  libgtest-dev libgmock-dev libbenchmark-dev
)
for extra in "$@"; do
  case $extra in
    package) packages+=(pkg-config) ;;
    lp) packages+=(coinor-cbc) ;;
    fuzz) packages+=(clang libclang-rt-14-dev) ;;
    mpi) packages+=(libopenmpi-dev openmpi-bin) ;;
    *) echo "setup: unknown set '$extra' (known: package, lp, fuzz, mpi)" >&2; exit 1 ;;
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
