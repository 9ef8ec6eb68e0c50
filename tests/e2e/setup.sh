#!/usr/bin/env bash
# Makes what all end-to-end tests share, once a run: the sample release's source trees, and the web
# masters built from them, each over the manifest of the one before.
set -euo pipefail

rm -rf "$FIXTURE"
mkdir -p "$FIXTURE/bin"
ln "$BIN/skyvane-demo-installer" "$FIXTURE/bin/builder" 2>/dev/null ||
  cp "$BIN/skyvane-demo-installer" "$FIXTURE/bin/builder"
export XDG_CONFIG_HOME=$FIXTURE/config ASAN_OPTIONS=detect_leaks=0

"$BIN/make-sample" "$FIXTURE/sample" --third
previous=none
for release in old:90900 new:91001 newer:91100; do
  version=${release%:*}
  "$FIXTURE/bin/builder" --build_master --type=0 --name="Skyvane $version" \
    --release=${release#*:} --source="$FIXTURE/sample/$version" \
    --output="$FIXTURE/master-$version" --previous="$previous"
  mkdir "$FIXTURE/manifest-$version"
  unzip -q "$FIXTURE/master-$version/disk_0/Skyvane $version/directory.txt.zip" \
    -d "$FIXTURE/manifest-$version"
  previous=$FIXTURE/manifest-$version/directory.txt
done
