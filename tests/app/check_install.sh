#!/usr/bin/env bash
# check_install.sh <build-dir>: installs the build into a scratch prefix and
# checks what a user gets: the files in their places, a valid desktop entry,
# the installed service answering over TLS, the installed program sending a
# tone through it, and the two Debian packages with
# the desktop entry, icons and systemd unit in them.
set -euo pipefail
build=$1
scratch=$(mktemp -d)
service_pid=""
cleanup() {
  [ -n "$service_pid" ] && kill "$service_pid" 2>/dev/null || true
  rm -rf "$scratch"
}
trap cleanup EXIT
fail() { echo "FAIL: $*" >&2; exit 1; }

prefix=$scratch/prefix
cmake --install "$build" --prefix "$prefix" >/dev/null

for f in bin/quillotone bin/quillotone-service share/applications/quillotone.desktop \
         lib/systemd/system/quillotone-service.service etc/quillotone-service/quillotone-service.conf; do
  [ -e "$prefix/$f" ] || fail "$f is not installed"
done
for size in 16 22 24 32 48 64 128 256; do
  icon=$prefix/share/icons/hicolor/${size}x${size}/apps/quillotone.png
  [ -s "$icon" ] || fail "no ${size}px icon"
  # The picture is the size its folder says.
  grep -q "$size x $size" <<<"$(file "$icon")" || fail "the ${size}px icon is $(file -b "$icon")"
done
ls "$prefix"/share/quillotone/fonts/Comfortaa-*.ttf >/dev/null || fail "the skin's font is not installed"
desktop-file-validate "$prefix/share/applications/quillotone.desktop" || fail "the desktop entry is not valid"
grep -q "^ExecStart=$prefix/bin/quillotone-service " "$prefix/lib/systemd/system/quillotone-service.service" \
  || fail "the unit does not start the installed service"
# Every option the unit passes is one the installed service says it takes.
help=$("$prefix/bin/quillotone-service" --help) || fail "quillotone-service --help failed"
for option in $(grep -o -- ' --[a-z-]*' "$prefix/lib/systemd/system/quillotone-service.service"); do
  grep -q -- "$option" <<<"$help" || fail "--help does not list $option, which the unit passes"
done

# The installed service takes a login over TLS, trusted through its own certificate.
data=$scratch/service
"$prefix/bin/quillotone-service" --listen 127.0.0.1:0 --data "$data" --demo-account 0412345678:tonedemo \
  >"$scratch/service.log" 2>&1 &
service_pid=$!
for _ in $(seq 300); do
  grep -q "listening on" "$scratch/service.log" && break
  kill -0 "$service_pid" 2>/dev/null || { cat "$scratch/service.log" >&2; fail "the installed service ended"; }
  sleep 0.1
done
base=$(grep -o 'https://[^ ]*' "$scratch/service.log" | head -n 1)
[ -n "$base" ] || fail "the installed service does not say where it listens"
reply=$(curl -sS --cacert "$data/service.crt" "${base}Login.asp?MobileNumber=0412345678&Password=tonedemo&Origin=0")
[ "${reply%%,*}" = 1 ] || fail "login through the installed service answered: $reply"

# The installed program sends a tone through it, driven as a user drives it.
bash "$(dirname "$0")/send_from_installed.sh" "$prefix" "$base" "$data" || fail "the installed program sent no tone"

# The packages, from the same rules.
(cd "$build" && cpack -G DEB -D CPACK_DEBIAN_COMPRESSION_TYPE=gzip -B "$scratch/packages" >/dev/null) \
  || fail "cpack could not make the packages"
program_deb=$(ls "$scratch"/packages/quillotone_*.deb)
service_deb=$(ls "$scratch"/packages/quillotone-service_*.deb)
program_files=$(dpkg-deb --contents "$program_deb")
service_files=$(dpkg-deb --contents "$service_deb")
for f in ./usr/bin/quillotone ./usr/share/applications/quillotone.desktop \
         ./usr/share/icons/hicolor/48x48/apps/quillotone.png; do
  grep -q " $f\$" <<<"$program_files" || fail "quillotone package lacks $f"
done
for f in ./usr/bin/quillotone-service ./usr/lib/systemd/system/quillotone-service.service \
         ./etc/quillotone-service/quillotone-service.conf; do
  grep -q " $f\$" <<<"$service_files" || fail "quillotone-service package lacks $f"
done
# Read whole first: grep -q stops early, and a writer cut off fails the pipe.
grep -q libavcodec-extra <<<"$(dpkg-deb --field "$program_deb" Depends)" || fail "the program's package does not ask for the phone encoders"
grep -q postinst <<<"$(dpkg-deb --info "$service_deb")" || fail "the service's package does not enable its unit"
echo "install tree and packages: all present"

# Installed and purged for real, where that is ours to do: as root, on a machine
# that has neither package already.
if [ "$(id -u)" -ne 0 ] || dpkg-query -W quillotone quillotone-service >/dev/null 2>&1; then
  echo "apt install and purge: skipped (not root, or the packages are already installed)"
  exit 0
fi
snapshot() {
  find /usr /etc /lib /var/lib -xdev -path /var/lib/apt -prune -o -print 2>/dev/null | sort
}
snapshot >"$scratch/before"
export DEBIAN_FRONTEND=noninteractive
apt-get install -y -q "$program_deb" "$service_deb" >"$scratch/apt.log" 2>&1 \
  || { cat "$scratch/apt.log" >&2; fail "apt could not install the packages"; }
installed_ok=true
for f in /usr/bin/quillotone /usr/share/applications/quillotone.desktop \
         /etc/systemd/system/multi-user.target.wants/quillotone-service.service; do
  [ -e "$f" ] || { echo "FAIL: apt install left out $f" >&2; installed_ok=false; }
done
id quillotone-service >/dev/null 2>&1 || { echo "FAIL: the service has no user of its own" >&2; installed_ok=false; }
apt-get purge -y -q quillotone quillotone-service >>"$scratch/apt.log" 2>&1 \
  || { cat "$scratch/apt.log" >&2; fail "apt could not purge the packages"; }
$installed_ok || fail "the installed packages are incomplete"
snapshot >"$scratch/after"
left=$(comm -13 "$scratch/before" "$scratch/after")
[ -z "$left" ] || fail "purging left behind: $left"
id quillotone-service >/dev/null 2>&1 && fail "purging left the service's user"
echo "apt install and purge: clean"
