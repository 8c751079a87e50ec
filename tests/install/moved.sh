#!/bin/sh
# moved.sh PREFIX LIBDIR CLIP OUT: whether a copy of an installation plays with the media program that lies in it, which
# needs no Qt, and without that program still plays, and says so in one line.
set -eu
prefix=$1 libdir=$2 clip=$3 out=$4
rm -rf "$out"
mkdir -p "$out/$libdir"
cp -a "$prefix/bin" "$out"
cp -a "$prefix/$libdir/." "$out/$libdir"
complaints() {
  "$out/bin/ymrplay" --headless --log error "$clip" 2>"$out/said" || { cat "$out/said"; exit 1; }
  grep -c "ymr-media can't be started" "$out/said" || true
}
ldd "$out/$libdir/ymr/ymr-media" | grep Qt && exit 1
test "$(complaints)" = 0
rm "$out/$libdir/ymr/ymr-media"
test "$(complaints)" = 1
