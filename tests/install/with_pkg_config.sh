#!/bin/sh
# with_pkg_config.sh PREFIX LIBDIR COMPILER SOURCES OUT [FLAGS]: builds and runs a host with what pkg-config says.
set -eu
prefix=$1 libdir=$2 compiler=$3 sources=$4 out=$5
shift 5
export PKG_CONFIG_PATH="$prefix/$libdir/pkgconfig"
flags=$(pkg-config --cflags --libs ymrvast)
# shellcheck disable=SC2086 # flags are words
"$compiler" "$@" "$sources/ad_tag_rig.cpp" -o "$out/ad_tag_rig_pc" $flags -Wl,-rpath,"$prefix/$libdir"
"$out/ad_tag_rig_pc"
if [ -e "$prefix/$libdir/pkgconfig/ymrplayer.pc" ]; then
  flags=$(pkg-config --cflags --libs ymrplayer)
  # shellcheck disable=SC2086
  "$compiler" "$@" -fPIC "$sources/small_host.cpp" -o "$out/small_host_pc" $flags -Wl,-rpath,"$prefix/$libdir"
  "$out/small_host_pc" nothing-here.mp4
fi
