#!/usr/bin/env bash
# Installs what is missing, builds the launcher with its bundle into
# BUILD_DIR (default: build/) and packs it as a Debian package with CPack,
# beside a package with the programs' debug symbols. Prints the paths of the
# packages; install the first from BUILD_DIR with
#   sudo apt-get install ./<package>.deb
set -euo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)
build=${BUILD_DIR:-$root/build}
BUILD_DIR=$build "$root/scripts/build.sh" bundle
cd "$build"
output=$(cpack -G DEB)
echo "$output"
packages=$(sed -n 's/^CPack: - package: \(.*\) generated\.$/\1/p' <<<"$output")
[ -n "$packages" ] || { echo "cpack named no package" >&2; exit 1; }
echo "Debian packages:"
echo "$packages"
