#!/usr/bin/env bash
# Makes the seed corpus of every fuzz target from the messages in tests/data, examples/ and
# fuzz/seeds: usage: fuzz/make_seed_corpus.sh OUT_DIR (one folder per target is made in it).
# Each target reads setting bytes before its text (the device language, zone, type and clock,
# then an option byte; the date target also an OLE date and an integer), so every message is
# written once per interface language.
set -euo pipefail
root="$(cd "$(dirname "$0")/.." && pwd)"
out="${1:?usage: make_seed_corpus.sh OUT_DIR}"
text_targets=(reader_flow codecs mime_parts html)
languages=7  # the first setting byte picks one of seven interface languages
# Monday 5 January 2009 10:20:30 as an OLE date, and the number 3 (little-endian).
ole_date='\x4a\x9f\xf4\xc9\x4d\x71\xe3\x40'
number='\x03\x00\x00\x00'

mapfile -d '' messages < <(find "$root/tests/data" "$root/examples" "$root/fuzz/seeds" \
  -type f \( -name '*.eml' -o -name '*.html' -o -name '*.txt' \) -print0 2>/dev/null | sort -z)

seed() {  # seed TARGET NAME PREFIX FILE...
  local target="$1" name="$2" prefix="$3"
  shift 3
  { printf "$prefix"; cat "$@"; } >"$out/$target/$name"
}

for target in "${text_targets[@]}" date; do mkdir -p "$out/$target"; done
for message in "${messages[@]}"; do
  name="$(basename "$(dirname "$message")")-$(basename "$message")"
  for ((language = 0; language < languages; language++)); do
    byte="$(printf '\\x%02x' "$language")"
    for target in "${text_targets[@]}"; do
      seed "$target" "$name.$language" "$byte\\x00\\x00" "$message"
    done
  done
done

# Date values: those of the messages, and the shapes a Date header takes in the wild.
{
  grep -h '^Date:' "${messages[@]}" 2>/dev/null | sed 's/^Date:[ \t]*//'
  cat <<'DATES'
Mon, 5 Jan 2009 10:20:30 +0900
5 Jan 2009 10:20:30 GMT
Tue, 31 Dec 1999 23:59:59 -1200
Sun, 29 Feb 2004 00:00:00 +1400 (JST)
Wed, 1 Jan 70 00:00:00 UT
Thu, 30 Apr 2009 25:61:61 EST
Fri,  3 Jul 2009 8:05:00 +0000
2009/01/05 10:20:30
DATES
} | tr -d '\r' | sort -u | while IFS= read -r value; do
  for ((language = 0; language < languages; language++)); do
    byte="$(printf '\\x%02x' "$language")"
    printf "$byte\\x00\\x00$ole_date$number%s" "$value" \
      >"$out/date/$(printf '%s' "$value" | cksum | cut -d' ' -f1).$language"
  done
done
