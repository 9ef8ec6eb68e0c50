#!/usr/bin/env bash
# The program in its languages: every one runs the demo to the end, in its own words; and whatever a
# run would have translated is among the texts that script/texts lists.
. "$(dirname "$0")/lib.sh"
texts=$(cd "$(dirname "$0")/../.." && pwd)/script/texts

log="$SCRATCH/bin/Skyvane Installer Log.txt"

serve_release new
options=($(through_proxy "$PORT") --unattended --missing_strings)

# demo LANGUAGE: installs a copy; LANGUAGE is an index.
demo() {
  want 0 run skyvane-demo-installer "${options[@]}" --pref:_lang="$1" --accept_eula \
    --dest="$SCRATCH" --name="Copy $1"
  same_tree "$FIXTURE/sample/new" Linux "$SCRATCH/Copy $1"
}

# want_lines KEY...: the output has the translations of these texts, each as a line of its own.
want_lines() {
  local key words
  for key in "$@"; do
    words=$(words_of "$language" "$key")
    [ -n "$words" ] && [ "$words" != "$key" ] || fail "language $language has no words for: $key"
    grep -qaxF -- "$words" "$OUT" || fail "no such line in the output: $words"
  done
}

for language in 1 2 3 4 5; do
  demo "$language"
  want_lines "Welcome" "Check Servers" "Pick Install Destination." "Installing"
  grep -qaF -- "$(words_of "$language" "Finshed Web Demo Install"): " "$OUT" ||
    fail "no last page in language $language"
  ! grep -qaE '^STRING |^ERROR: language' "$log" || fail "$(grep -aE '^STRING |^ERROR: language' "$log")"
  rm -r "$SCRATCH/Copy $language"
done

# A language without a file, one of which nobody knows, and a damaged file leave the English.
for language in 6 7 -1; do
  demo "$language"
  want_text "I have finished installing the Skyvane 9 web demo at: $SCRATCH/Copy $language/."
done

# With a file that has no entry yet the log is a template for it: of the demo, of an update, and of
# one that is stopped by a folder that cannot be made.
mkdir -p "$SCRATCH/bin/Resources/text/korean"
printf 'I\n900 version\nTRANSLATION\n' >"$SCRATCH/bin/Resources/text/korean/Installer2.txt"
missing() { grep -a '^STRING ' "$log" | sed 's/^STRING //; s/====.*//' >>"$SCRATCH/missing.txt"; }
rm -r "$SCRATCH/Copy 6"
demo 6
missing
rm "$SCRATCH/Copy 6/$(cut -f1 "$SCRATCH/want.tsv" | head -n 1)"
want 0 run skyvane-web-updater "${options[@]}" --pref:_lang=6 --copy="$SCRATCH/Copy 6"
missing
echo "in the way" >"$SCRATCH/file"
run skyvane-demo-installer "${options[@]}" --pref:_lang=6 --accept_eula --dest="$SCRATCH/file" --name=No
[ "$STATUS" != 0 ] || fail "a copy inside a file"
missing

sort -u "$SCRATCH/missing.txt" -o "$SCRATCH/missing.txt"
"$texts" | sort >"$SCRATCH/texts.txt"
[ "$(wc -l <"$SCRATCH/missing.txt")" -ge 60 ] || fail "few texts: $(cat "$SCRATCH/missing.txt")"
comm -23 "$SCRATCH/missing.txt" "$SCRATCH/texts.txt" >"$SCRATCH/unlisted.txt"
[ ! -s "$SCRATCH/unlisted.txt" ] || fail "not in script/texts: $(cat "$SCRATCH/unlisted.txt")"
