#!/usr/bin/env bash
# build.sh <build-dir> [cmake options...]: installs what is missing, configures and builds.
set -euo pipefail
here=$(cd "$(dirname "$0")/.." && pwd)
dir=$1; shift
bash "$here/tools/install-deps.sh"
cmake -S "$here" -B "$dir" -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo "$@"
cmake --build "$dir" -j "$(nproc)"
