#!/bin/sh
# with_pkg_config.sh PREFIX LIBDIR COMPILER SOURCES EXAMPLES OUT [FLAGS]: builds and runs hosts with what pkg-config says.
set -eu
prefix=$1 libdir=$2 compiler=$3 sources=$4 examples=$5 out=$6
shift 6
export PKG_CONFIG_PATH="$prefix/$libdir/pkgconfig"
flags=$(pkg-config --cflags --libs ymrvast)
# shellcheck disable=SC2086 # flags are words
"$compiler" "$@" "$sources/ad_tag_rig.cpp" -o "$out/ad_tag_rig_pc" $flags -Wl,-rpath,"$prefix/$libdir"
"$out/ad_tag_rig_pc"
if [ -e "$prefix/$libdir/pkgconfig/ymrplayer.pc" ]; then
  flags=$(pkg-config --cflags --libs ymrplayer)
  # shellcheck disable=SC2086
  "$compiler" "$@" -fPIC "$examples/minimal/main.cpp" -o "$out/minimal_pc" $flags -Wl,-rpath,"$prefix/$libdir"
  "$out/minimal_pc" nothing-here.mp4 && exit 1  # it says that there is no such file
  test $? -eq 1
fi
