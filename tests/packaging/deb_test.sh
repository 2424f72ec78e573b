#!/usr/bin/env bash
# deb_test.sh BUILD|PACKAGE: makes the Debian package unless it is given, installs it into an empty root, uses it there, and removes it without trace.
set -euo pipefail
given=$(realpath "$1")
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
fail() { echo "deb_test: $*" >&2; exit 1; }

deb=$given
if [ -d "$given" ]; then
    (cd "$given" && cpack -B "$work/out" >"$work/cpack.log" 2>&1) || { tail -n 30 "$work/cpack.log"; fail "cpack"; }
    deb=$(find "$work/out" -maxdepth 1 -name '*.deb')
fi
[ "$(echo "$deb" | wc -l)" = 1 ] && [ -f "$deb" ] || fail "not one package: $deb"

root=$work/root
mkdir -p "$root"/var/lib/dpkg/{info,updates,triggers} "$root"/{tmp,var/log,var/cache}
touch "$root/var/lib/dpkg/status"
# The package's scripts call ldconfig; they run outside the root, where it must not do anything.
mkdir "$work/bin"
printf '#!/bin/sh\n' >"$work/bin/ldconfig"
chmod +x "$work/bin/ldconfig"
as_root=()
[ "$(id -u)" -eq 0 ] || as_root=(fakeroot)
package_manager() {
    PATH=$work/bin:$PATH ${as_root[@]+"${as_root[@]}"} dpkg --root="$root" --force-depends --force-not-root --force-script-chrootless "$@" >"$work/dpkg.log" 2>&1 ||
        { cat "$work/dpkg.log"; fail "dpkg $*"; }
}
contents() { (cd "$root" && find . -path ./var/lib/dpkg -prune -o -path ./var/log -prune -o -print | sort); }

before=$(contents)
package_manager -i "$deb"
for file in usr/bin/quillo usr/lib/quillo/Plugins.AdobeCC.Transmit.so usr/lib/quillo/libquillo.so.4 usr/share/man/man1/quillo.1 \
    usr/share/man/man5/quillo.conf.5 usr/lib/systemd/user/quillo.service usr/lib/systemd/user/quillo.socket \
    usr/share/bash-completion/completions/quillo usr/share/zsh/vendor-completions/_quillo usr/share/doc/quillo/copyright; do
    [ -s "$root/$file" ] || fail "$file was not installed"
done
[ "$(cd "$root" && find . -path ./var/lib/dpkg -prune -o -path ./var/log -prune -o -type f -print | wc -l)" = 10 ] ||
    fail "something else was installed: $(cd "$root" && find usr -type f)"

program=$(sed -n 's/^ExecStart=\([^ ]*\).*/\1/p' "$root/usr/lib/systemd/user/quillo.service")
[ -x "$root$program" ] || fail "the unit starts $program, which is not there"
depends=$(dpkg-deb -f "$deb" Depends)
for package in libstdc++6 libgstreamer1.0-0 gstreamer1.0-plugins-good; do
    [[ $depends == *"$package"* ]] || fail "does not depend on $package: $depends"
done

export QUILLO_RUNTIME_DIR=$work/run QUILLO_PUBLISHER=
"$root/usr/bin/quillo" --version | grep -q '^quillo [0-9]' || fail "the installed command does not run"
"$root/usr/bin/quillo" play --pattern bars --size 64x64 --frames 5 --audio off >"$work/play.log" 2>&1 </dev/null ||
    { cat "$work/play.log"; fail "the installed command does not play through the installed module"; }

package_manager -P quillo
[ "$(contents)" = "$before" ] || fail "left behind: $(diff <(echo "$before") <(contents))"
echo "deb_test: installed, played, removed without trace"
