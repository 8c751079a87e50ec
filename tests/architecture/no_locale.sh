#!/bin/sh
# Fails when a library calls what goes by the user's language: letters, numbers with a point, streams that write numbers.
# Whole numbers may be printed; none of the sources has a format for others, which are stringWithDouble's.
classes='to(lower|upper)|is(alnum|alpha|digit|graph|print|punct|space|upper|lower|xdigit)|strn?casecmp|strcoll|strftime'
numbers='strto(d|f|ld)|ato(f|i|l|ll)|_*(isoc99_)?v?s?scanf|v?s(n)?printf'
for library in "$@"; do
  known=$(nm -D --undefined-only "$library" | grep -E " U (_*($classes|$numbers)(_chk)?(@|$)|_ZNS[ios].*_M_(insert|extract)I)" |
    grep -vE ' _*snprintf(_chk)?@')
  [ -z "$known" ] || { echo "$library: $known"; exit 1; }
done
cd "$(dirname "$0")/../.."
! grep -rnE --include='*.cpp' --include='*.h' 'printf\([^"]*"[^"]*%[-+ #0-9.*]*l?[aefgAEFG]\b' VAST ads net platform player subtitles ui vastscreen xml
