#!/usr/bin/env bash
# Tests the player: units, then the built page in headless Chromium against nginx.
set -euo pipefail
here=$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)
"$here/../../scripts/dependencies.sh" examples
KZSPACKAGER=$("$here/../packager.sh")
export KZSPACKAGER
"$here/build.sh"
cd "$here"
npm run --silent test
npm run --silent e2e
