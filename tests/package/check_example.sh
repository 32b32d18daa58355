#!/usr/bin/env bash
# Installs the build tree as a user would get it, checks what is installed,
# and builds and runs examples/cpp against it as a separate project:
#   check_example.sh BUILD_DIR SOURCE_DIR CONFIG MODE WAY
# MODE  install: `cmake --install` into a prefix of its own;
#       deb: `cpack -G DEB`, then the package installed with dpkg into a
#       scratch root (its own dpkg database: the machine is not touched),
#       and removed again at the end.
# WAY   cmake (find_package) or pkgconfig (the example's Makefile).
# Exits 77 (skipped) when a tool the check needs is absent: pkg-config comes
# from `scripts/setup.sh package`.
set -u
build=$1 source=$2 config=$3 mode=$4 way=$5
work=$build/package-test/$mode-$way
rm -rf "$work"
mkdir -p "$work"

fail() { echo "FAIL: $*"; exit 1; }
skip() { echo "SKIPPED: $*"; exit 77; }
# Runs a command, showing its output only when it fails.
run() { "$@" > "$work/last.log" 2>&1 || { cat "$work/last.log"; fail "$*"; }; }

if [ "$way" = pkgconfig ] && ! command -v pkg-config > /dev/null; then
    skip "pkg-config is not installed (scripts/setup.sh package installs it)"
fi

case $mode in
install)
    prefix=$work/prefix
    run cmake --install "$build" --prefix "$prefix" --config "$config"
    ;;
deb)
    command -v dpkg > /dev/null || skip "not a Debian system: no dpkg"
    (cd "$build" && run cpack -G DEB -C "$config" -B "$work/cpack") || exit 1
    deb=$(ls "$work"/cpack/quarrix_*.deb 2> /dev/null | head -n 1)
    [ -n "$deb" ] || fail "cpack made no package"
    # Every dependency must name a package this Debian knows, the Boost
    # thread run-time library among them.
    depends=$(dpkg-deb -f "$deb" Depends)
    echo "Depends: $depends"
    [[ $depends == *libboost-thread1.* ]] || fail "no dependency on Boost.Thread's run-time library"
    for dep in $(echo "$depends" | sed 's/([^)]*)//g' | tr ',|' '  '); do
        dpkg-query -W "$dep" > /dev/null 2>&1 || fail "dependency $dep is not a package of this system"
    done
    root=$work/root
    mkdir -p "$root/var/lib/dpkg/info" "$root/var/lib/dpkg/updates" "$root/etc"
    touch "$root/var/lib/dpkg/status"
    # dpkg runs the package's maintainer scripts (ldconfig, for the shared
    # library) inside the root: it gets the host's shell and ldconfig, with
    # the libraries they load, so that they run there and only there.
    for tool in /bin/sh /sbin/ldconfig; do
        for file in "$tool" $(ldd "$(readlink -f "$tool")" 2> /dev/null | grep -o '/[^ ]*'); do
            mkdir -p "$root$(dirname "$file")"
            cp -L "$file" "$root$file"
        done
    done
    before=$(cd "$root" && find . -not -path './var/lib/dpkg*' -not -path './etc/ld.so.cache*' | sort)
    # The scratch database knows no other package; the dependencies were
    # checked against the host's above.
    run dpkg --root="$root" --force-depends -i "$deb"
    prefix=$root/usr
    ;;
*) fail "unknown mode $mode" ;;
esac

# The layout: the public headers under include/quarrix/ and nothing else
# there; the library, the config files, the manual page, the documents, the
# examples and the editor files.
library=$(find "$prefix" -name 'libquarrix.*' | head -n 1)
[ -n "$library" ] || fail "no libquarrix installed"
libdir=$(dirname "$library")
for f in bin/quarrix bin/quarrix-lp share/man/man1/quarrix.1.gz share/doc/quarrix/README.md \
         share/doc/quarrix/docs/language.md share/doc/quarrix/examples/knapsack.qxm \
         share/doc/quarrix/examples/cpp/knapsack.cpp share/vim/vimfiles/syntax/qxm.vim \
         share/vim/vimfiles/ftdetect/qxm.vim share/quarrix/editors/textmate/qxm.tmLanguage.json; do
    [ -f "$prefix/$f" ] || fail "$f is not installed"
done
[ -f "$libdir/cmake/Quarrix/QuarrixConfig.cmake" ] || fail "no CMake package config"
[ -f "$libdir/pkgconfig/quarrix.pc" ] || fail "no quarrix.pc"
headers=$(cd "$prefix/include" && find . -type f | sort | tr '\n' ' ')
expected=$(for h in quarrix qxexception qxexpression qxlpwriter qxmodel qxoperator qxparam qxphase \
    qxsolution qxstatistics qxversion; do echo "./quarrix/$h.h"; done | sort | tr '\n' ' ')
[ "$headers" = "$expected" ] || fail "installed headers: $headers; expected: $expected"
# Each public header compiles on its own with the installed ones only, so
# none of them reaches for a header that is not installed.
for h in $expected; do
    echo "#include <${h#./}>" | c++ -std=c++17 -fsyntax-only -I"$prefix/include" -x c++ - \
        > "$work/header.log" 2>&1 || { cat "$work/header.log"; fail "$h does not compile alone"; }
done
if [ -e "$libdir/libquarrix.so" ]; then
    soname=$(objdump -p "$libdir/libquarrix.so" | awk '$1 == "SONAME" { print $2 }')
    [[ $soname =~ ^libquarrix\.so\.[0-9]+$ ]] || fail "SONAME is '$soname'"
    [ -e "$libdir/$soname" ] || fail "no $soname beside libquarrix.so"
fi

# The installed launcher runs an installed example.
(cd "$prefix/share/doc/quarrix" && "$prefix/bin/quarrix" examples/knapsack.qxm qxTimeLimit=1) \
    > "$work/launcher.out" 2>&1 || { cat "$work/launcher.out"; fail "the installed quarrix failed"; }

# The example, built the chosen way outside the source tree.
example=$work/example
mkdir -p "$example"
case $way in
cmake)
    run cmake -S "$source/examples/cpp" -B "$example" -DCMAKE_PREFIX_PATH="$prefix" \
        -DCMAKE_BUILD_TYPE="$config"
    run cmake --build "$example"
    ;;
pkgconfig)
    # Installed elsewhere than its prefix says (the scratch root of the
    # package), quarrix.pc is told where it is now.
    pkgconfig="pkg-config --define-variable=prefix=$prefix"
    cflags=$(PKG_CONFIG_PATH=$libdir/pkgconfig $pkgconfig --cflags quarrix)
    [[ $cflags == *"$prefix/include"* ]] || fail "pkg-config --cflags gives '$cflags'"
    run env PKG_CONFIG_PATH="$libdir/pkgconfig" \
        make -C "$example" -f "$source/examples/cpp/Makefile" PKG_CONFIG="$pkgconfig"
    ;;
*) fail "unknown way $way" ;;
esac
LD_LIBRARY_PATH=$libdir "$example/knapsack" > "$work/knapsack.out" 2> "$work/knapsack.err" ||
    { cat "$work/knapsack.out" "$work/knapsack.err"; fail "the example failed"; }
# Items 3, 5 and 6 set by hand and read back, then the optimum: items 2, 4,
# 5, 6 and 7 fill the capacity of 102 exactly, for a value of 280.
printf 'weight 80 value 230\nbest value 280\n' | diff - "$work/knapsack.out" ||
    fail "the example's output differs"

if [ "$mode" = deb ]; then
    run dpkg --root="$root" -r quarrix
    after=$(cd "$root" && find . -not -path './var/lib/dpkg*' -not -path './etc/ld.so.cache*' | sort)
    left=$(comm -13 <(echo "$before") <(echo "$after"))
    [ -z "$left" ] || fail "left after removal: $left"
fi
echo "package $mode, example built with $way: ok"
