#!/usr/bin/env bash
# Installs the Debian packages a make target needs, only those missing. Works as root, with sudo
# otherwise. Usage: tools/ensure-deps.sh build|test|fuzz|bench|run|package
set -euo pipefail

build=(cmake ninja-build g++ pkg-config ccache qt6-base-dev libqt6sql6-sqlite libqt6sql6-psql
       qt6-svg-dev qt6-tools-dev libxml2-dev libsqlite3-dev libboost-dev libgtest-dev libgmock-dev fonts-dejavu-core)
declare -a want=("${build[@]}")
for group in "$@"; do
    case "$group" in
        build|run) ;;
        # The package tests build the Debian packages too.
        test) want+=(postgresql sqlite3 dpkg-dev file) ;;
        package) want+=(dpkg-dev file) ;;
        fuzz) want+=(clang libclang-rt-14-dev) ;;
        bench) want+=(libbenchmark-dev sqlite3 libcsv-dev) ;;
        *) echo "ensure-deps: unknown group '$group'" >&2; exit 2 ;;
    esac
done

missing=()
for pkg in "${want[@]}"; do
    if ! dpkg-query -W -f='${Status}' "$pkg" 2>/dev/null | grep -q 'install ok installed'; then
        missing+=("$pkg")
    fi
done
[ ${#missing[@]} -eq 0 ] && exit 0

echo "Installing missing packages: ${missing[*]}" >&2
sudo=""
[ "$(id -u)" -eq 0 ] || sudo="sudo"
export DEBIAN_FRONTEND=noninteractive
$sudo apt-get update -qq
$sudo apt-get install -y -qq --no-install-recommends "${missing[@]}" >&2
