#!/usr/bin/env bash
# Installs a built tree into a folder, runs what is there, and builds two programs against it.
# usage: install_test.sh BUILD_FOLDER SOURCE_FOLDER
set -euo pipefail
build=$(cd "$1" && pwd) source=$(cd "$2" && pwd)
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
prefix="$work/prefix"
cmake --install "$build" --prefix "$prefix" >/dev/null

"$prefix/bin/kzspackager" --version | grep -q '5,0,16,5016'
for page in man1/kzspackager.1 man5/kzspackager_config.xml.5; do
    test -s "$prefix/share/man/$page"
done
test -s "$prefix/share/bash-completion/completions/kzspackager"
test -s "$prefix/share/zsh/vendor-completions/_kzspackager"
test ! -e "$prefix/include/kzspackager/kzm/impl"
# Code for the optimiser of this very compiler would be refused by the next one.
archives=$(find "$prefix" -name '*.a')
test -n "$archives"
for archive in $archives; do
    sections=$(objdump -h "$archive")
    case $sections in *gnu.lto*) echo "$archive is not for every compiler" >&2; exit 1 ;; esac
done

cmake -S "$source/tests/install/consumer" -B "$work/cmake" -DCMAKE_PREFIX_PATH="$prefix" >/dev/null
cmake --build "$work/cmake" >/dev/null
test "$("$work/cmake/consumer")" = "3 entries"

export PKG_CONFIG_PATH
PKG_CONFIG_PATH=$(dirname "$(find "$prefix" -name kzspackager.pc)")
flags=$(pkg-config --define-variable=prefix="$prefix" --cflags --libs kzspackager)
# shellcheck disable=SC2086  # the flags are words
c++ -std=c++17 "$source/tests/install/consumer/main.cpp" -o "$work/consumer" $flags
test "$("$work/consumer")" = "3 entries"
# The Debian packages: the program with what it needs to run, and the libraries.
(cd "$work" && cpack --config "$build/CPackConfig.cmake" -B "$work/packages") >/dev/null
program=$(ls "$work"/packages/kzspackager_*.deb)
for package in "$work"/packages/*.deb; do dpkg-deb --contents "$package"; done >"$work/contents"
dpkg-deb --field "$program" Depends >"$work/depends"
grep -q './usr/bin/kzspackager$' "$work/contents"
grep -q './usr/share/man/man1/kzspackager.1' "$work/contents"
grep -q 'kzs/BootstrapBuilder.h$' "$work/contents"
grep -q 'libboost-program-options' "$work/depends"
echo "installed, ran, and was built upon"
