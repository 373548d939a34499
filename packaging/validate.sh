#!/bin/sh
# Runs a validator on the desktop files: validate.sh <tool> <arguments...>
# Exits with 77, which CTest reports as skipped, when the tool is not
# installed (it comes with desktop-file-utils or appstream).
tool=$1
if ! command -v "$tool" >/dev/null 2>&1; then
    echo "$tool is not installed; install it to run this check"
    exit 77
fi
exec "$@"
