#!/bin/sh
# links.sh FOLDER: whether every link within the README there leads somewhere.
set -eu
cd "$1"
sed 's/](/\n](/g' README.md | sed -n 's/^](\([^) :]*\)).*/\1/p' | sort -u | while read -r link; do
  test -e "$link" || { echo "$1/README.md: nothing at $link"; exit 1; }
done
