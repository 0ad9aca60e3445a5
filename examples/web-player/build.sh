#!/usr/bin/env bash
# Installs the packages that the page needs and builds it into dist/.
# usage: build.sh [--packages-only]
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")"
if ! cmp -s package-lock.json node_modules/.installed-lock; then
    npm ci --no-audit --no-fund --loglevel=error
    cp package-lock.json node_modules/.installed-lock
fi
[ "${1:-}" = --packages-only ] || npm run --silent build -- --logLevel warn
