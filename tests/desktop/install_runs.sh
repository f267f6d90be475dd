#!/bin/sh
# usage: install_runs.sh BUILD_FOLDER PREFIX. Installs into PREFIX and runs the programs there.
set -eu
build=$1 prefix=$2
rm -rf "$prefix"
cmake --install "$build" --prefix "$prefix" >/dev/null
version=$(env -u DISPLAY -u WAYLAND_DISPLAY "$prefix/bin/quarvelo" --version)
case $version in "quarvelo "[0-9]*) ;; *) echo "unexpected version: $version"; exit 1 ;; esac
"$prefix/bin/quarvelo-scope-sim" --help | grep -q -- --portmapper-port
for file in share/applications/org.quarvelo.Quarvelo.desktop \
    share/metainfo/org.quarvelo.Quarvelo.metainfo.xml \
    share/icons/hicolor/scalable/apps/org.quarvelo.Quarvelo.svg \
    share/icons/hicolor/48x48/apps/org.quarvelo.Quarvelo.png \
    share/man/man1/quarvelo.1 share/man/man1/quarvelo-scope-sim.1 \
    lib/udev/rules.d/60-quarvelo.rules lib/udev/rules.d/61-quarvelo-uaccess.rules; do
  test -s "$prefix/$file" || { echo "not installed: $file"; exit 1; }
done
rm -rf "$prefix"
