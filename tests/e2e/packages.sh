#!/usr/bin/env bash
# The packages, each put into a root that holds the C library and nothing else, with dpkg: the program
# runs there, the demo is installed unattended, the package is removed, and nothing of it is left. What
# the packages say of themselves is looked at by the tools for it.
. "$(dirname "$0")/lib.sh"
need_root "a root folder of a test's own"
need_tools dpkg-deb dpkg-shlibdeps lintian desktop-file-validate appstreamcli man
RELEASE_BUILD=$BIN/../release
[ -f "$RELEASE_BUILD/CPackConfig.cmake" ] || { echo "misses a release build"; exit 77; }

made=$SCRATCH/packages
cpack --config "$RELEASE_BUILD/CPackConfig.cmake" -B "$made" >"$OUT" 2>&1 || fail "cpack"
rm -r "$made/_CPack_Packages"

# bare_root FOLDER: the loader, the C library and its mathematics, and dpkg's own books.
bare_root() {
  mkdir -p "$1"/{lib64,usr/lib/x86_64-linux-gnu,etc,tmp,root,proc,var/lib/dpkg/{updates,info}}
  ln -s usr/lib "$1/lib"
  cp -L /lib64/ld-linux-x86-64.so.2 "$1/lib64/"
  cp -L /lib/x86_64-linux-gnu/lib{c,m}.so.6 "$1/usr/lib/x86_64-linux-gnu/"
  : >"$1/var/lib/dpkg/status"
}
in_root() {  # FOLDER COMMAND...
  local chroot
  chroot=$(command -v chroot)
  env -i HOME=/root PATH=/usr/bin "$(command -v timeout)" 120 "$chroot" "$@" >"$OUT" 2>&1 </dev/null
}
files_of() { (cd "$1" && find . \( -path ./proc -o -path ./var/lib/dpkg -o -path ./var/log \) -prune -o -print | sort); }

serve_release new
for edition in skyvane-demo-installer skyvane-web-updater skyvane-disc-installer; do
  deb=$(echo "$made/${edition}"_*.deb)
  echo "$edition: $(stat -c %s "$deb") bytes packed"
  [ "$(dpkg-deb -f "$deb" Depends | sed 's/ (>= [0-9.]*)//')" = libc6 ] ||
    fail "depends on $(dpkg-deb -f "$deb" Depends)"

  root=$SCRATCH/root-$edition
  bare_root "$root"
  mount -t proc proc "$root/proc" || { echo "needs root: a mount"; exit 77; }
  MOUNTS+=("$root/proc")
  files_of "$root" >"$SCRATCH/before.txt"
  # The root has the C library, but not as a package.
  dpkg --root="$root" --force-depends -i "$deb" >"$OUT" 2>&1 || fail "not installed"
  in_root "$root" "$edition" --help || fail "does not start"
  desktop-file-validate "$root"/usr/share/applications/*.desktop || fail "menu entry"
  appstreamcli validate --no-net "$root"/usr/share/metainfo/*.xml >"$OUT" 2>&1 || fail "AppStream"
  [ -z "$(man --warnings -l "$root"/usr/share/man/man1/*.gz 2>&1 >/dev/null)" ] || fail "man page"

  if [ "$edition" = skyvane-demo-installer ]; then
    # shellcheck disable=SC2046  # two options
    in_root "$root" "$edition" --unattended --accept_eula --dest=/tmp --name="Skyvane 9" \
      $(through_proxy "$PORT") || fail "the demo is not installed"
    copied=$(find "$root/tmp/Skyvane 9" -type f | wc -l)
    [ "$copied" -gt 100 ] || fail "only $copied files are in the copy"
    ! ls "$root/usr/lib/$edition/"*.txt 2>/dev/null || fail "written beside the program"
    rm -r "$root/root/.config" "$root/root/.local" "$root/tmp/Skyvane 9"
  else
    rm -rf "$root/root/.config" "$root/root/.local"
  fi
  dpkg --root="$root" -P "$edition" >"$OUT" 2>&1 || fail "not removed"
  files_of "$root" >"$SCRATCH/after.txt"
  diff "$SCRATCH/before.txt" "$SCRATCH/after.txt" || fail "left behind"

  # The archive, unpacked anywhere, under another name.
  mkdir "$SCRATCH/moved-$edition"
  tar -xzf "$made"/*"$edition.tar.gz" -C "$SCRATCH/moved-$edition" --strip-components=1
  env -u DISPLAY "$SCRATCH/moved-$edition/bin/$edition" --help >"$OUT" 2>&1 || fail "moved, it does not start"
done
lintian --fail-on error --allow-root "$made"/*.deb >"$OUT" 2>&1 || fail "lintian"
