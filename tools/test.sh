#!/usr/bin/env bash
# Builds everything with AddressSanitizer and UndefinedBehaviorSanitizer and runs every test.
# The tests start their own sound server, web service and CDDB server. Then
# the fuzz targets run a minute each (tools/fuzz.sh).
set -euo pipefail
here=$(cd "$(dirname "$0")/.." && pwd)
bash "$here/tools/build.sh" "$here/build-test" -DQUILLOTONE_SANITIZE=ON -DQUILLOTONE_TESTS=ON
(cd "$here/build-test" && ctest --output-on-failure -j "$(nproc)" --timeout 600)
# Every reader of outside bytes, fuzzed for a minute from its seeds (tests/fuzz).
bash "$here/tools/fuzz.sh" 60
