#!/usr/bin/env bash
# build.sh <build-dir> [cmake options...]: installs what is missing, configures and builds.
set -euo pipefail
here=$(cd "$(dirname "$0")/.." && pwd)
dir=$1; shift
bash "$here/tools/install-deps.sh"
# A compiler cache, when the machine has one, makes rebuilds of unchanged sources free.
launcher=()
if command -v ccache >/dev/null; then
  launcher=(-DCMAKE_CXX_COMPILER_LAUNCHER=ccache -DCMAKE_C_COMPILER_LAUNCHER=ccache)
fi
cmake -S "$here" -B "$dir" -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo "${launcher[@]}" "$@"
cmake --build "$dir" -j "$(nproc)"
