#!/bin/sh
# Installs the Debian packages that the named jobs need and that are missing.
#
#   tools/setup.sh build|test|format|lint|asan|coverage|bench|fuzz|windows|arm64|bare|cluster|package|report ...
#
# Nothing else is changed on the machine. Runs as root, or through sudo.
set -eu

packages_for() {
    case "$1" in
        build) echo g++ cmake ninja-build pkg-config liblz4-dev libxxhash-dev libcli11-dev libfmt-dev \
            libssl-dev libstb-dev zlib1g-dev fonts-dejavu-core ;;
        test) packages_for build; echo dpkg-dev fish groff-base jq libgtest-dev locales lz4 parallel python3 \
            python3-jsonschema python3-lz4 python3-numpy zsh ;;
        format) echo clang-format ;;
        lint) packages_for test; echo clang-tidy ;;
        bench) packages_for build; echo libbenchmark-dev lz4 python3 python3-lz4 python3-numpy ;;
        coverage) packages_for test; echo gcovr ;;
        cluster) packages_for build; echo hostname jq munge parallel procps python3 slurm-client slurmctld slurmd ;;
        asan | fuzz) packages_for test; echo clang libclang-rt-14-dev ;;
        windows) packages_for test; echo g++-mingw-w64-x86-64-posix libz-mingw-w64-dev \
            wine wine64 xvfb fonts-wine fonts-droid-fallback fonts-nanum fonts-tlwg-waree-ttf ;;
        arm64) packages_for test; echo g++-aarch64-linux-gnu qemu-user-static ;;
        bare) echo debootstrap ;;
        report) packages_for build; echo chromium python3 ;;
        package) packages_for windows; echo lintian nsis ;;
        *) echo "setup: unknown job '$1'" >&2; exit 2 ;;
    esac
}

is_installed() {
    [ "$(dpkg-query -W -f '${db:Status-Status}' "$1" 2>/dev/null)" = installed ]
}

wanted=$(for job in "$@"; do packages_for "$job"; done | tr ' ' '\n' | sort -u)
missing=
for package in $wanted; do
    is_installed "$package" || missing="$missing $package"
done
[ -n "$missing" ] || exit 0

as_root=
[ "$(id -u)" -eq 0 ] || as_root=sudo
echo "setup: installing$missing"
export DEBIAN_FRONTEND=noninteractive
$as_root apt-get update -qq
# shellcheck disable=SC2086 # the list is meant to be split
$as_root apt-get install -y -qq --no-install-recommends $missing >/dev/null
