#!/usr/bin/env bash
# Builds the program and starts it.
set -euo pipefail
here=$(cd "$(dirname "$0")/.." && pwd)
bash "$here/tools/build.sh" "$here/build" -DQUILLOTONE_TESTS=OFF
run=("$here/build/bin/quillotone")
if [ -z "${DISPLAY:-}" ] && [ -z "${WAYLAND_DISPLAY:-}" ]; then
  run=(xvfb-run -a "${run[@]}")
fi
exec "${run[@]}"
