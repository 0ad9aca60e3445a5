#!/usr/bin/env bash
# Tests the drawing of presentations.
set -euo pipefail
here=$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)
"$here/../../scripts/dependencies.sh" examples
KZSPACKAGER=$("$here/../packager.sh")
export KZSPACKAGER PYTHONDONTWRITEBYTECODE=1
python3 "$here/test_draw.py"
