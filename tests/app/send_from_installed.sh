#!/usr/bin/env bash
# send_from_installed.sh <prefix> <service-base> <service-data>: a new user's
# first tone, from the installed program, as they would send it: sign in,
# skip the music search, open a song, mark three seconds, send, use a free
# quill. The program reads only its settings, so those aim it at the service.
# Windows are told apart by their names, which each skinned window gives as its role.
set -euo pipefail
prefix=$1 base=$2 data=$3
scratch=$(mktemp -d)
pids=()
cleanup() {
  for p in "${pids[@]}"; do kill "$p" 2>/dev/null || true; done
  rm -rf "$scratch"
}
trap cleanup EXIT
fail() {
  echo "FAIL: $*" >&2
  # What the screen showed, for whoever reads the failure.
  [ -n "${DISPLAY:-}" ] && command -v import >/dev/null && import -window root "${TMPDIR:-/tmp}/quillotone-send-failed.png" 2>/dev/null || true
  [ -s "$scratch/program.log" ] && tail -n 20 "$scratch/program.log" >&2
  exit 1
}

export HOME=$scratch/home XDG_CONFIG_HOME=$scratch/home/.config XDG_DATA_HOME=$scratch/home/.local/share
export XDG_RUNTIME_DIR=$scratch/run
mkdir -p "$XDG_RUNTIME_DIR" "$XDG_CONFIG_HOME/Quillotone" && chmod 700 "$XDG_RUNTIME_DIR"
unset QT_QPA_PLATFORM

Xvfb -displayfd 3 -screen 0 1280x1024x24 -nolisten tcp 3>"$scratch/display" >"$scratch/xvfb.log" 2>&1 &
pids+=($!)
for _ in $(seq 200); do [ -s "$scratch/display" ] && break; sleep 0.1; done
[ -s "$scratch/display" ] || fail "Xvfb did not start"
export DISPLAY=:$(cat "$scratch/display")
pulseaudio -n --daemonize=no --exit-idle-time=-1 -L "module-null-sink sink_name=null" \
  -L module-native-protocol-unix >"$scratch/pulse.log" 2>&1 &
pids+=($!)

song=$scratch/song.mp3
ffmpeg -loglevel error -f lavfi -i "sine=frequency=440:duration=8" -ac 2 "$song"
printf '[Settings]\nServiceURL=%s\nServiceCertificate=%s\nDID=1\n' "$base" "$data/service.crt" \
  >"$XDG_CONFIG_HOME/Quillotone/Quillotone.ini"

ASAN_OPTIONS=detect_leaks=0 "$prefix/bin/quillotone" >"$scratch/program.log" 2>&1 &
program=$!
pids+=($program)

# The newest visible window of one of the given names (a|b), once it is up
# within tries tenths of a second; $seen is that window and $name its name
# (the window's role). False if none came.
seen=""
name=""
appears() {
  local names=$1 tries=$2 w
  for _ in $(seq "$tries"); do
    kill -0 "$program" 2>/dev/null || fail "the program ended while waiting for $names"
    for w in $(xdotool search --onlyvisible --name Quillotone 2>/dev/null | sort -n -r); do
      [ "$w" != "$seen" ] || continue
      name=$(xprop -id "$w" WM_WINDOW_ROLE 2>/dev/null | sed -n 's/.* = "\(.*\)"$/\1/p' || true)
      if [[ "|$names|" == *"|$name|"* ]]; then
        seen=$w
        sleep 0.5  # let it paint and take the pointer
        return 0
      fi
    done
    sleep 0.1
  done
  return 1
}
await() { appears "$1" 600 || fail "$2 never came"; }
click() { xdotool mousemove --window "$seen" "$1" "$2" click 1; }
# Keys go to the window under the pointer: there is no window manager.
keys() { xdotool mousemove --window "$seen" 20 60; "$@"; }

await frmLogin "the sign-in window"
keys xdotool type --delay 20 0412345678
keys xdotool key Tab
keys xdotool type --delay 20 tonedemo
keys xdotool key Return
# The service's news come once to an account; the offer to search for music
# comes while there is no music list.
await "frmAnnouncements|frmConfirmSearch" "the news or the offer to search for music"
if [ "$name" = frmAnnouncements ]; then
  keys xdotool key Return
  await frmConfirmSearch "the offer to search for music"
fi
click 267 192  # Not now
await frmMain "the main window"
main=$seen
click 36 193  # Open
for _ in $(seq 100); do
  dialog=$(xdotool search --onlyvisible --name "^Open$" 2>/dev/null | tail -n 1 || true)
  [ -n "$dialog" ] && break
  sleep 0.1
done
[ -n "$dialog" ] || fail "the file chooser never came"
sleep 0.5
xdotool mousemove --window "$dialog" 200 150
xdotool type --delay 10 "$song"
xdotool key Return
for _ in $(seq 100); do
  [ -n "$(xdotool search --onlyvisible --name "^Open$" 2>/dev/null)" ] || break
  sleep 0.1
done
# Mark three seconds and send. While the song still loads the window takes
# no clicks, or there is nothing to mark and Send says so: then try again.
for try in $(seq 60); do
  seen=$main
  xdotool mousemove --window "$main" 70 133 mousedown 1 mousemove --window "$main" 150 133 \
    mousemove --window "$main" 230 133 mouseup 1
  click 403 193  # Send
  if appears "frmAboutToUseFreeQuill|frmNoToneSelected|frmToneNotTrimmed" 50; then
    [ "$name" = frmAboutToUseFreeQuill ] && break
    keys xdotool key Return
  fi
  [ "$try" -lt 60 ] || fail "the free quill question never came"
  sleep 1
done
click 131 192  # Send it
await frmSent "the word that the tone is on its way"

tones=("$data"/tones/*.amr)
[ -s "${tones[0]}" ] || fail "no tone reached the service's outbox"
grep -q "Adaptive Multi-Rate" <<<"$(file "${tones[0]}")" || fail "the tone is $(file -b "${tones[0]}")"
# Three seconds of AMR-NB at 12.2 kbit/s: 32-byte frames, 50 a second.
size=$(stat -c %s "${tones[0]}")
[ "$size" -gt 4000 ] && [ "$size" -lt 6000 ] || fail "the tone is $size bytes, not three seconds"
echo "the installed program sent a tone"
