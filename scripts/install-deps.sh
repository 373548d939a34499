#!/usr/bin/env bash
# Installs the Debian 12 packages needed to build, test and show the
# Start-Center, as far as they are missing. Uses sudo when not run as root.
set -euo pipefail

packages=(
    build-essential cmake ninja-build pkg-config
    qt6-base-dev qt6-base-dev-tools qt6-scxml-dev libpulse-dev libfontconfig-dev
    qt6-translations-l10n libgl-dev libbz2-dev
    xvfb xauth x11-utils fonts-dejavu-core
    dpkg-dev file   # the Debian package: dpkg-shlibdeps
    lintian desktop-file-utils appstream   # the checks of the package and its desktop files
    xdg-utils libglib2.0-bin   # the case-file types checked as the desktop sees them
)

missing=()
for p in "${packages[@]}"; do
    dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q "install ok installed" || missing+=("$p")
done
[ ${#missing[@]} -eq 0 ] && exit 0

echo "Installing: ${missing[*]}"
sudo=""
[ "$(id -u)" -eq 0 ] || sudo="sudo"
$sudo apt-get update -qq
DEBIAN_FRONTEND=noninteractive $sudo apt-get install -y -qq --no-install-recommends "${missing[@]}"
