#!/bin/bash
# Makes the Debian package of a build folder that is built, in its folder "package", and leaves the package's path in
# the file package/name.
#
#   scripts/package.sh BUILD

set -eu
cd "$1"
rm -rf package
cpack -G DEB -B "$PWD/package"
packages=("$PWD"/package/*.deb)
echo "${packages[0]}" >package/name
