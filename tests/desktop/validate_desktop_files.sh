#!/bin/sh
# usage: validate_desktop_files.sh DESKTOP_FOLDER. Exits 77 (skipped) without the validators.
set -eu
command -v desktop-file-validate >/dev/null && command -v appstreamcli >/dev/null || exit 77
desktop-file-validate "$1/org.quarvelo.Quarvelo.desktop"
appstreamcli validate --no-net --explain "$1/org.quarvelo.Quarvelo.metainfo.xml"
