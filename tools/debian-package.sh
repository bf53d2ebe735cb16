#!/bin/sh
# Makes the Debian package of a build's command line, with its documents.
#
#   tools/debian-package.sh BUILD-FOLDER VERSION FOLDER
#
# Leaves FOLDER/trevolt_VERSION_ARCHITECTURE.deb. The program is the very one that was built there, and
# so the one that was tested: a folder debian/ with its own rules would compile another, and would
# repeat the version and the changes that CMakeLists.txt and CHANGELOG.md have.
set -eu
root=$(cd "$(dirname "$0")/.." && pwd)
build=$1
version=$2
folder=$(cd "$3" && pwd)
# The project has no mail address: who reports something does it where the project is hosted.
maintainer='Trevolt authors <authors@trevolt.invalid>'
architecture=$(dpkg --print-architecture)
SOURCE_DATE_EPOCH=$("$root/tools/source-date.sh")
export SOURCE_DATE_EPOCH
umask 022

work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
stage=$work/stage
documents=$stage/usr/share/doc/trevolt

for component in programs documents; do
    cmake --install "$build" --component "$component" --prefix "$stage/usr" >/dev/null
done
strip --strip-unneeded --remove-section=.comment --remove-section=.note "$stage/usr/bin/trevolt-cli"

# One file of copyright and one of changes, where every package has them.
{
    cat "$documents/LICENSE"
    for name in xxHash fmt CLI11 stb DejaVu-fonts; do
        printf '\n\nThe program holds parts of %s, whose terms are:\n\n' "$name"
        cat "$documents/licences/$name.txt"
    done
} >"$work/copyright"
rm -r "$documents/LICENSE" "$documents/licences" "$documents/CHANGELOG.md"
mv "$work/copyright" "$documents/copyright"
/usr/bin/python3 "$root/tools/debian-changelog.py" "$maintainer" "$SOURCE_DATE_EPOCH" \
    >"$documents/changelog"
gzip -9n "$documents/changelog"
# Where Debian's zsh looks.
mv "$stage/usr/share/zsh/site-functions" "$stage/usr/share/zsh/vendor-completions"
[ ! -d "$stage/usr/share/man" ] || find "$stage/usr/share/man" -type f -exec gzip -9n {} +

# dpkg-shlibdeps wants to be where a source package is.
mkdir "$work/debian" "$stage/DEBIAN"
printf 'Source: trevolt\n\nPackage: trevolt\nArchitecture: any\n' >"$work/debian/control"
libraries=$(cd "$work" && dpkg-shlibdeps -O stage/usr/bin/trevolt-cli)
# As dpkg reckons it: of a folder not what it takes here.
kib=$(find "$stage/usr" \( -type f -printf '%s\n' -o -printf '1\n' \) |
    awk '{ kib += int(($1 + 1023) / 1024) } END { print kib }')
sed -e "s/@VERSION@/$version/" -e "s/@ARCHITECTURE@/$architecture/" -e "s/@MAINTAINER@/$maintainer/" \
    -e "s/@KIB@/$kib/" -e "s/@LIBRARIES@/${libraries#shlibs:Depends=}/" \
    "$root/packaging/debian-control.in" >"$stage/DEBIAN/control"
(cd "$stage" && find usr -type f -print0 | LC_ALL=C sort -z | xargs -0 md5sum >DEBIAN/md5sums)

# dpkg-deb itself holds back only what is newer. More threads would pack it otherwise.
find "$stage" -exec touch --no-dereference --date="@$SOURCE_DATE_EPOCH" {} +
dpkg-deb --root-owner-group --threads-max=1 --build "$stage" \
    "$folder/trevolt_${version}_$architecture.deb" >/dev/null
