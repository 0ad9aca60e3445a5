#!/usr/bin/env bash
# Installs the Debian packages that a step needs, if any is missing.
# usage: dependencies.sh build|test|bench|stress|examples
set -euo pipefail

build=(g++ cmake ninja-build ccache libboost-dev libboost-program-options-dev
    libboost-filesystem-dev libboost-iostreams-dev libboost-thread-dev
    libboost-date-time-dev libboost-system-dev libexpat1-dev libssl-dev)
test=("${build[@]}" libgtest-dev libgmock-dev libbenchmark-dev clang-format python3 openssl git
    man-db groff-base pkgconf dpkg-dev file)
bench=("${build[@]}" libbenchmark-dev python3 openssl strace time)
# The fuzz targets need clang and its runtime, the coverage report gcovr.
stress=("${test[@]}" clang libclang-rt-14-dev gcovr)
# The examples: a web server and a browser, Snakemake, and Node.js unless another one is there.
examples=("${build[@]}" nginx-light chromium snakemake python3 openssl)
command -v node >/dev/null || examples+=(nodejs)
command -v npm >/dev/null || examples+=(npm)

case "${1:-}" in
    build) wanted=("${build[@]}") ;;
    test) wanted=("${test[@]}") ;;
    bench) wanted=("${bench[@]}") ;;
    stress) wanted=("${stress[@]}") ;;
    examples) wanted=("${examples[@]}") ;;
    *) echo "usage: $0 build|test|bench|stress|examples" >&2; exit 2 ;;
esac

missing=()
for package in "${wanted[@]}"; do
    [ "$(dpkg-query -W -f='${db:Status-Status}' "$package" 2>/dev/null)" = installed ] ||
        missing+=("$package")
done
[ ${#missing[@]} -gt 0 ] || exit 0

as_root=()
if [ "$(id -u)" -ne 0 ]; then
    command -v sudo >/dev/null || { echo "$0: must be root or have sudo" >&2; exit 1; }
    as_root=(sudo)
fi
echo "installing: ${missing[*]}" >&2
{
    "${as_root[@]}" apt-get update -qq
    "${as_root[@]}" env DEBIAN_FRONTEND=noninteractive \
        apt-get install -y -qq --no-install-recommends "${missing[@]}"
} >&2
