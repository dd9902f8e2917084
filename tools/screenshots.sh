#!/usr/bin/env bash
# Renders every window of the program to build/screenshots/<name>.png under a
# virtual X display, so that anyone can look at the skin.
set -euo pipefail
here=$(cd "$(dirname "$0")/.." && pwd)
dir="$here/build-screenshots"
bash "$here/tools/install-deps.sh"
cmake -S "$here" -B "$dir" -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo -DQUILLOTONE_TESTS=ON >/dev/null
cmake --build "$dir" -j "$(nproc)" --target quillotone-screenshots
out="$here/build/screenshots"
rm -rf "$out"
mkdir -p "$out"
xvfb-run -a -s "-screen 0 1280x1024x24 -dpi 96" "$dir/tests/shell/quillotone-screenshots" "$out"
echo "Screenshots in $out"
