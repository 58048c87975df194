#!/usr/bin/env bash
# debs.sh BUILD VERSION "COMPONENTS": builds the Debian packages of BUILD with CPack and checks
# what they hold, then runs olvex-settings from the unpacked programs package. With
# OLVEX_TEST_APT_INSTALL=1 the packages are installed into this machine with apt-get instead
# (a machine of its own, e.g. a CI container: it changes /usr).
set -euo pipefail
build=$1 version=$2 components=$3
work="$build/package-debs"
rm -rf "$work"
mkdir -p "$work"
fail() { echo "FAIL: $*" >&2; exit 1; }

(cd "$build" && cpack -G DEB -B "$work" >"$work/cpack.log" 2>&1) || { cat "$work/cpack.log"; fail "cpack"; }

deb() { ls "$work"/"$1"_"$version"_*.deb 2>/dev/null | head -n 1; }
for name in libolvexsettings0 libolvexsettings-dev olvexsettings-designer olvexsettings-programs; do
    [ -n "$(deb $name)" ] || fail "no package $name in $work"
done

# contains PACKAGE REGEX...: every pattern matches a path of the package.
contains() {
    local package=$1; shift
    local listing
    # The path is the sixth field; a link's line goes on with " -> target".
    listing=$(dpkg-deb --contents "$(deb "$package")" | awk '{print $6}')
    for pattern in "$@"; do
        grep -Eq "$pattern" <<<"$listing" || fail "$package holds nothing like $pattern"
    done
}
contains libolvexsettings0 '/usr/lib/.*libolvexsettings-core\.so\.0$' \
    '/usr/lib/.*libolvexsettings-widgets\.so\.0$'
component_headers=()
IFS=';' read -ra entries <<<"$components"
for entry in "${entries[@]}"; do
    case "$entry" in *.h) component_headers+=("/usr/include/olvexsettings/$entry\$") ;; esac
done
contains libolvexsettings-dev '/usr/include/olvexsettings/common/host\.h$' \
    '/usr/include/olvexsettings/common/widgets/uiservices\.h$' "${component_headers[@]}" \
    '/usr/lib/.*cmake/OlvexSettings/OlvexSettingsConfig\.cmake$' \
    '/usr/lib/.*cmake/OlvexSettings/OlvexSettingsConfigVersion\.cmake$' \
    '/usr/lib/.*libolvexsettings-widgets\.so$'
contains olvexsettings-designer '/qt6/plugins/designer/libOlvexSettingsDesigner\.so$'
contains olvexsettings-programs '/usr/bin/olvex-monitor$' '/usr/bin/olvex-das$' \
    '/usr/bin/olvex-settings$' '/usr/share/applications/olvex-monitor\.desktop$' \
    '/usr/share/icons/hicolor/scalable/apps/olvex-monitor\.svg$'
# No private header leaks into the development package.
if dpkg-deb --contents "$(deb libolvexsettings-dev)" | grep -Eq '/(host|das)/|_p\.h$'; then
    fail "libolvexsettings-dev holds private headers"
fi
dpkg-deb --field "$(deb libolvexsettings-dev)" Depends | grep -q "libolvexsettings0 (= $version)" ||
    fail "libolvexsettings-dev does not depend on libolvexsettings0 $version"

if [ "${OLVEX_TEST_APT_INSTALL:-0}" = 1 ]; then
    sudo=""
    [ "$(id -u)" -eq 0 ] || sudo="sudo"
    $sudo apt-get install -y -qq "$work"/*.deb >"$work/apt.log" 2>&1 || { cat "$work/apt.log"; fail "apt-get install"; }
    bin=/usr/bin
else
    dpkg-deb -x "$(deb olvexsettings-programs)" "$work/root"
    bin="$work/root/usr/bin"
fi
out=$(env -u DISPLAY -u WAYLAND_DISPLAY "$bin/olvex-settings" --version)
[ "$out" = "olvex-settings $version" ] || fail "olvex-settings --version printed '$out'"
echo "packages:"; ls -1 "$work"/*.deb
