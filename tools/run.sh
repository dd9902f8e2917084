#!/usr/bin/env bash
# Builds the program, starts the bundled web service with its demo account
# (0412345678, password tonedemo) unless one already listens, and starts the
# program against it. A service started here stops with the program.
set -euo pipefail
here=$(cd "$(dirname "$0")/.." && pwd)
bash "$here/tools/build.sh" "$here/build" -DQUILLOTONE_TESTS=OFF

data="${XDG_DATA_HOME:-$HOME/.local/share}/quillotone-service"
service_pid=""
if ! (exec 3<>/dev/tcp/127.0.0.1/8443) 2>/dev/null; then
  mkdir -p "$data"
  # The key of the operator's page, readable by this user only.
  [ -s "$data/operator.key" ] || (umask 077; head -c 18 /dev/urandom | base64 >"$data/operator.key")
  "$here/build/bin/quillotone-service" --listen 127.0.0.1:8443 --data "$data" \
    --demo-account 0412345678:tonedemo --operator-key-file "$data/operator.key" >"$data/service.log" 2>&1 &
  service_pid=$!
  trap 'kill "$service_pid" 2>/dev/null || true' EXIT
  # Wait for the line that says it takes requests.
  for _ in $(seq 100); do
    grep -q "listening on" "$data/service.log" 2>/dev/null && break
    kill -0 "$service_pid" 2>/dev/null || { cat "$data/service.log" >&2; exit 1; }
    sleep 0.1
  done
  echo "Quillotone service: $(grep -o 'https://[^ ]*' "$data/service.log"), outbox at https://127.0.0.1:8443/outbox.asp"
fi

run=("$here/build/bin/quillotone")
if [ -z "${DISPLAY:-}" ] && [ -z "${WAYLAND_DISPLAY:-}" ]; then
  run=(xvfb-run -a "${run[@]}")
fi
"${run[@]}"
