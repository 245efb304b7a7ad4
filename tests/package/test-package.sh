#!/usr/bin/env bash
# Builds the Debian package of a build folder, installs it, starts the installed program from its
# desktop entry as a new user with an empty home on a virtual display, photographs the main window,
# checks the user's program folder and that nothing was written under /usr, then removes it all.
#   tests/package/test-package.sh BUILD_DIR
# Exit 77 (skipped) when not root, without dpkg, or when the package is already installed.
set -euo pipefail

splash="MP3 Brasswick 1.3"
main="MP3 Brasswick 1.3- Studio Edition"

# On the virtual display, as the test user: two starts of the desktop entry's command.
if [ "${1:-}" = "--on-display" ]; then
  command=$2 out=$3 folder=$4
  set -f
  # shellcheck disable=SC2086 # the Exec line is split into words as a launcher would
  set -- $command
  set +f
  "$@" &
  pid=$!
  sleep 2
  xwininfo -root -tree > "$out/windows-2s.txt"
  import -window root "$out/package-splash.png"
  found=""
  for _ in $(seq 1 60); do
    if xwininfo -root -tree | grep -q "\"$main\""; then found=yes; break; fi
    kill -0 "$pid" 2>/dev/null || break
    sleep 0.5
  done
  xwininfo -root -tree > "$out/windows-first.txt"
  [ -n "$found" ] && sleep 1 && import -window root "$out/package-main.png"
  alive=no
  kill -0 "$pid" 2>/dev/null && alive=yes
  echo "$alive" > "$out/alive-first"
  kill "$pid" 2>/dev/null || true
  wait "$pid" 2>/dev/null || true

  # What the first start laid out, before anything changes it.
  for name in LocalJ/drivers.cdx splash.png cdquality.jpg velmoraimg.jpg README.md LICENSE; do
    cmp -s "/usr/share/brasswick/$name" "$folder/$name" || echo "$name" >> "$out/differing-first"
  done
  # What a user made, an installation file the user changed, and one an older version laid down.
  printf '[EqData]\r\nBands=15\r\nBand0=3\r\n' > "$folder/Eq.ini"
  printf 'C:\\music\r\n' > "$folder/LocalJ/localf.dd1"
  printf '1\r\nMy Own Recorder\r\n' > "$folder/LocalJ/drivers.cdx"
  printf 'older version\n' > "$folder/README.md"
  older=$(cksum < "$folder/README.md")
  sed -i "s/^.* README.md\$/$older README.md/" "$folder/.installation"
  for name in Eq.ini LocalJ/localf.dd1 LocalJ/drivers.cdx; do
    cp "$folder/$name" "$out/$(basename "$name").before"
  done
  "$@" &
  pid=$!
  sleep 3
  echo "started again" > "$out/second-start"
  kill "$pid" 2>/dev/null || true
  wait "$pid" 2>/dev/null || true
  exit 0
fi

skip() { echo "package test skipped: $*"; exit 77; }
fail() { echo "package test: $*" >&2; exit 1; }

build=$(cd "${1:?usage: test-package.sh BUILD_DIR}" && pwd)
[ "$(id -u)" -eq 0 ] || skip "not root"
command -v dpkg >/dev/null && command -v dpkg-deb >/dev/null || skip "no dpkg"
for tool in cpack xvfb-run import xwininfo identify; do
  command -v "$tool" >/dev/null || skip "no $tool"
done
if dpkg-query -W -f='${Status}' brasswick 2>/dev/null | grep -q "ok installed"; then
  skip "brasswick is installed already; it is left alone"
fi

started=$(date +%s)
work=$(mktemp -d /tmp/brasswick-package.XXXXXX)
chmod 755 "$work"
user=""
installed=""
cleanup() {
  if [ -n "$installed" ]; then dpkg -r brasswick >/dev/null 2>&1 || true; fi
  if [ -n "$user" ]; then userdel -f -r "$user" >/dev/null 2>&1 || true; fi
  rm -rf "$work"
}
trap cleanup EXIT

echo "== cpack"
rm -rf "$build/deb"
(cd "$build" && cpack -G DEB -B "$build/deb") > "$work/cpack.log" 2>&1 || { cat "$work/cpack.log"; fail "cpack failed"; }
deb=$(find "$build/deb" -maxdepth 1 -name 'brasswick_*.deb' | head -n 1)
[ -n "$deb" ] || fail "cpack made no brasswick_*.deb"
echo "$deb"
dpkg-deb -f "$deb" Package Version Depends
contents=$(dpkg-deb -c "$deb")
for path in ./usr/bin/brasswick ./usr/lib/brasswick/brasswick ./usr/share/brasswick/LocalJ/drivers.cdx \
            ./usr/share/applications/com.velmora_works.Brasswick.desktop \
            ./usr/share/metainfo/com.velmora_works.Brasswick.metainfo.xml \
            ./usr/share/icons/hicolor/48x48/apps/brasswick.png ./usr/share/icons/hicolor/256x256/apps/brasswick.png \
            ./usr/share/man/man1/brasswick.1.gz ./usr/share/doc/brasswick/copyright; do
  grep -q " $path\( \|$\)" <<<"$contents" || fail "the package lacks $path"
done
dpkg-deb -f "$deb" Depends | grep -q "libqt6widgets6" || fail "no library dependencies from dpkg-shlibdeps"

if command -v lintian >/dev/null; then
  echo "== lintian"
  lintian --allow-root "$deb" > "$work/lintian.txt" 2>&1 || true
  cat "$work/lintian.txt"
  if grep -q '^E: ' "$work/lintian.txt"; then fail "lintian reports errors"; fi
fi

echo "== dpkg -i"
installed=yes
if ! dpkg -i "$deb" > "$work/dpkg.log" 2>&1; then
  # Dependencies this machine lacks come from the archive.
  DEBIAN_FRONTEND=noninteractive apt-get install -f -y -qq > "$work/apt.log" 2>&1 || { cat "$work/dpkg.log" "$work/apt.log"; fail "the package does not install"; }
fi
dpkg-query -W -f='${Status}' brasswick | grep -q "install ok installed" || fail "the package is not installed"
[ -x /usr/bin/brasswick ] || fail "no /usr/bin/brasswick"

desktop=/usr/share/applications/com.velmora_works.Brasswick.desktop
command -v desktop-file-validate >/dev/null && { desktop-file-validate "$desktop" || fail "the desktop entry is not valid"; }
if command -v appstreamcli >/dev/null; then
  appstreamcli validate --no-net /usr/share/metainfo/com.velmora_works.Brasswick.metainfo.xml > "$work/appstream.txt" 2>&1 || { cat "$work/appstream.txt"; fail "the metainfo is not valid"; }
fi
exec_line=$(sed -n 's/^Exec=//p' "$desktop" | head -n 1)
# Field codes stand for files a user drops on the entry: none here.
exec_line=$(sed -E 's/ ?%[fFuUdDnNickvm]//g' <<<"$exec_line")
[ -n "$exec_line" ] || fail "the desktop entry has no Exec"

# Anything the program or the launcher writes under the installation is newer than this.
stamp=$work/stamp
touch "$stamp"
sleep 1

home=$work/home
out=$work/out
cp "$0" "$work/test-package.sh"
chmod 755 "$work/test-package.sh"
if command -v useradd >/dev/null && command -v userdel >/dev/null && command -v runuser >/dev/null; then
  user=bwtest$$
  useradd --home-dir "$home" --create-home --shell /bin/sh --user-group "$user" || fail "useradd failed"
  runas=(runuser -u "$user" --)
else
  # No user tools: root with a home of its own stands in for a new user.
  mkdir -p "$home"
  runas=()
fi
folder=$home/.local/share/brasswick
mkdir -p "$out"
[ -z "$user" ] || chown "$user:" "$out"
echo "== the installed program as ${user:-root} with an empty home"
"${runas[@]}" env -i HOME="$home" USER="${user:-root}" LOGNAME="${user:-root}" SHELL=/bin/sh \
  PATH=/usr/local/bin:/usr/bin:/bin LANG=C.UTF-8 \
  xvfb-run -a -s "-screen 0 1280x800x24" "$work/test-package.sh" --on-display "$exec_line" "$out" "$folder" \
  > "$work/program.log" 2>&1 || { cat "$work/program.log"; fail "the program's run failed"; }

mkdir -p "$build/screenshots"
for p in package-splash package-main; do
  [ -f "$out/$p.png" ] && cp "$out/$p.png" "$build/screenshots/$p.png"
done
grep -q "\"$splash\"" "$out/windows-2s.txt" || { cat "$work/program.log"; fail "no splash after two seconds"; }
grep -q "\"$main\"" "$out/windows-first.txt" || { cat "$work/program.log"; fail "no main window within 30 seconds"; }
[ "$(cat "$out/alive-first")" = yes ] || fail "the program ended by itself"
colours=$(identify -format '%k' "$out/package-main.png")
[ "$colours" -gt 20 ] || fail "the main window's picture has only $colours colours"

# The program folder was laid out, is the user's, and holds the installation's files.
[ -f "$folder/LocalJ/drivers.cdx" ] || fail "no LocalJ/drivers.cdx in $folder"
[ ! -s "$out/differing-first" ] || fail "laid out unlike the installation: $(cat "$out/differing-first")"
for name in LocalJ/drivers.cdx splash.png cdquality.jpg velmoraimg.jpg README.md LICENSE; do
  [ -f "$folder/$name" ] && [ ! -L "$folder/$name" ] || fail "$folder/$name is not a file"
done
if [ -n "$user" ]; then
  owner=$(stat -c %U "$folder/LocalJ/drivers.cdx")
  [ "$owner" = "$user" ] || fail "the program folder belongs to $owner"
fi
# A new start brought the older version's file up to date and kept what the user made or changed.
[ -f "$out/second-start" ] || fail "the second start did not happen"
cmp -s /usr/share/brasswick/README.md "$folder/README.md" || fail "README.md of an older version was not updated"
cmp -s "$out/Eq.ini.before" "$folder/Eq.ini" || fail "Eq.ini was changed by a new start"
cmp -s "$out/localf.dd1.before" "$folder/LocalJ/localf.dd1" || fail "LocalJ/localf.dd1 was changed by a new start"
cmp -s "$out/drivers.cdx.before" "$folder/LocalJ/drivers.cdx" || fail "the user's own LocalJ/drivers.cdx was replaced"
left=$(find "$folder" -name '*.new-*')
[ -z "$left" ] || fail "temporary files left: $left"

# Nothing written under the installation.
written=$(find /usr/lib/brasswick /usr/share/brasswick /usr/bin/brasswick -newer "$stamp" 2>/dev/null || true)
[ -z "$written" ] || fail "written under /usr: $written"
verify=$(dpkg --verify brasswick 2>&1 || true)
[ -z "$verify" ] || fail "dpkg --verify: $verify"

echo "== dpkg -r"
dpkg -r brasswick > "$work/dpkg-r.log" 2>&1 || { cat "$work/dpkg-r.log"; fail "the package does not remove"; }
installed=""
[ ! -e /usr/bin/brasswick ] && [ ! -e /usr/lib/brasswick ] && [ ! -e /usr/share/brasswick ] || fail "files left after dpkg -r"

echo "package test: installed, started as a new user, photographed into $build/screenshots, removed ($(( $(date +%s) - started )) s)"
