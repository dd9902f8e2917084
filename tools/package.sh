#!/usr/bin/env bash
# Builds the Debian packages quillotone and quillotone-service into build-package/.
# Install them with: apt install ./build-package/quillotone_*.deb ./build-package/quillotone-service_*.deb
set -euo pipefail
here=$(cd "$(dirname "$0")/.." && pwd)
bash "$here/tools/build.sh" "$here/build-package" -DQUILLOTONE_TESTS=OFF -DCMAKE_BUILD_TYPE=Release \
  -DCMAKE_INSTALL_PREFIX=/usr
cd "$here/build-package"
cpack -G DEB
ls -1 "$here"/build-package/*.deb
