#!/usr/bin/env bash
# The installed launcher on a make-believe installation: it lays out the user's program folder,
# brings a newer version's files in, keeps the files a user changed and what the program made,
# and starts the program with the folder named. Needs no root and installs nothing.
#   tests/package/test-launcher.sh LAUNCHER_TEMPLATE
set -euo pipefail
template=$(cd "$(dirname "${1:?usage: test-launcher.sh brasswick.sh.in}")" && pwd)/$(basename "$1")

work=$(mktemp -d /tmp/brasswick-launcher.XXXXXX)
trap 'rm -rf "$work"' EXIT
fail() { echo "launcher test: $*" >&2; exit 1; }

prefix=$work/usr
names='LocalJ/drivers.cdx splash.png cdquality.jpg velmoraimg.jpg README.md LICENSE'
mkdir -p "$prefix/bin" "$prefix/lib/brasswick" "$prefix/share/brasswick/LocalJ"
sed "s|@BRASSWICK_INSTALL_PREFIX@|$prefix|g" "$template" > "$prefix/bin/brasswick"
chmod 755 "$prefix/bin/brasswick"
# The program only tells where it was started and with what.
cat > "$prefix/lib/brasswick/brasswick" <<'PROGRAM'
#!/bin/sh
echo "folder=$BRASSWICK_PROGRAM_DIR"
echo "arguments=$*"
PROGRAM
chmod 755 "$prefix/lib/brasswick/brasswick"

install_version() {
  for name in $names; do
    printf 'version %s of %s\n' "$1" "$name" > "$prefix/share/brasswick/$name"
  done
  chmod -R a-w "$prefix/share/brasswick"
}
unlock() { chmod -R u+w "$prefix/share/brasswick"; }
home=$work/home
folder=$home/.local/share/brasswick
start() { env -i HOME="$home" PATH=/usr/bin:/bin "$@" "$prefix/bin/brasswick" one "two words"; }

# First start: the folder is laid out with every installation file, writable by the user.
install_version 1
out=$(start)
[ "$out" = "folder=$folder
arguments=one two words" ] || fail "the program was started as: $out"
for name in $names; do
  [ "$(cat "$folder/$name")" = "version 1 of $name" ] || fail "$name not laid out"
  [ -w "$folder/$name" ] || fail "$name is not writable in the user's folder"
done
[ -d "$folder/LocalJ" ] || fail "no LocalJ"

# The user changes one installation file, removes another and the program writes its own.
printf 'my own recorder list\n' > "$folder/LocalJ/drivers.cdx"
rm "$folder/splash.png"
printf '[EqData]\r\nBand0=3\r\n' > "$folder/Eq.ini"
printf 'work\n' > "$folder/LocalJ/velmora0.wav"

# A new version arrives: untouched files follow it, the changed one stays, a missing one returns.
unlock
install_version 2
errors=$work/errors
start > /dev/null 2> "$errors"
[ "$(cat "$folder/LocalJ/drivers.cdx")" = "my own recorder list" ] || fail "the user's drivers.cdx was replaced"
grep -q "keeping your own $folder/LocalJ/drivers.cdx" "$errors" || fail "no word about the kept drivers.cdx: $(cat "$errors")"
for name in splash.png cdquality.jpg velmoraimg.jpg README.md LICENSE; do
  [ "$(cat "$folder/$name")" = "version 2 of $name" ] || fail "$name did not follow the new version"
done
[ "$(cat "$folder/Eq.ini")" = "$(printf '[EqData]\r\nBand0=3\r')" ] || fail "Eq.ini was touched"
[ "$(cat "$folder/LocalJ/velmora0.wav")" = work ] || fail "the work file was touched"

# The kept file stays kept on later starts, and a file the user put back as installed follows again.
start > /dev/null 2>&1
[ "$(cat "$folder/LocalJ/drivers.cdx")" = "my own recorder list" ] || fail "the user's drivers.cdx was replaced later"
cp "$prefix/share/brasswick/LocalJ/drivers.cdx" "$folder/LocalJ/drivers.cdx"
unlock
install_version 3
start > /dev/null 2>&1
[ "$(cat "$folder/LocalJ/drivers.cdx")" = "version 3 of LocalJ/drivers.cdx" ] || fail "drivers.cdx as installed did not follow"
left=$(find "$folder" -name '*.new-*')
[ -z "$left" ] || fail "temporary files left: $left"

# A relative XDG_DATA_HOME is ignored; an absolute one is used.
out=$(cd "$work" && start XDG_DATA_HOME=relative)
[ "$out" = "folder=$folder
arguments=one two words" ] && [ ! -e "$work/relative" ] || fail "a relative XDG_DATA_HOME was used"
out=$(start XDG_DATA_HOME="$work/data")
[ "${out%%$'\n'*}" = "folder=$work/data/brasswick" ] && [ -f "$work/data/brasswick/README.md" ] || fail "XDG_DATA_HOME was not used: $out"

# A broken installation or an unwritable home is said, and nothing starts.
unlock
rm "$prefix/share/brasswick/LICENSE"
if out=$(start 2>&1); then fail "started without LICENSE"; fi
grep -q "LICENSE is missing: reinstall the package" <<<"$out" || fail "no word about the broken installation: $out"
install_version 4
# A file that cannot be copied (here a folder where the picture should be, which even root cannot
# copy as a file) stops the start and leaves the old record whole, with no temporary files.
cp "$folder/.installation" "$work/record-before"
unlock
rm "$prefix/share/brasswick/splash.png" "$folder/splash.png"
mkdir "$prefix/share/brasswick/splash.png"
if out=$(start 2>&1); then fail "started without its picture"; fi
grep -q "cannot write $folder/splash.png" <<<"$out" || fail "no word about the picture: $out"
cmp -s "$work/record-before" "$folder/.installation" || fail "the record changed after a failed copy"
left=$(find "$folder" -name '*.new-*')
[ -z "$left" ] || fail "temporary files left after a failed copy: $left"
rmdir "$prefix/share/brasswick/splash.png"
install_version 4
start > /dev/null 2>&1 || fail "did not start once the installation was whole again"
[ "$(cat "$folder/splash.png")" = "version 4 of splash.png" ] || fail "the picture was not laid down again"
if [ "$(id -u)" -ne 0 ]; then
  rm -rf "$folder"
  chmod a-w "$home/.local/share"
  if out=$(start 2>&1); then fail "started without a folder"; fi
  grep -q "cannot create" <<<"$out" || fail "no word about the folder: $out"
  chmod u+w "$home/.local/share"
fi
echo "launcher test: passed"
