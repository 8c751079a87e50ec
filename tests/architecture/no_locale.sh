#!/bin/sh
# Fails when a library calls what goes by the user's language: letters, numbers with a point, streams that write numbers.
classes='to(lower|upper)|is(alnum|alpha|digit|graph|print|punct|space|upper|lower|xdigit)|strn?casecmp|strcoll|strftime'
numbers='strto(d|f|ld)|ato(f|i|l|ll)|_*(isoc99_)?v?s?scanf|v?s(n)?printf'
for library in "$@"; do
  known=$(nm -D --undefined-only "$library" | grep -E " U (_*($classes|$numbers)(_chk)?(@|$)|_ZNS[ios].*_M_(insert|extract)I)" |
    grep -vE ' _*snprintf(_chk)?@')  # of whole numbers; doubles are stringWithDouble's
  [ -z "$known" ] || { echo "$library: $known"; exit 1; }
done
