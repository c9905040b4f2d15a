#!/usr/bin/env bash
# End to end: `teskcolor separate` of a 24-megapixel TIFF beside lcms2's
# `tificc` converting the same TIFF to packed CMYK with the same profile, in
# one run; wall time and peak memory of each.
#   bench/separate_vs_tificc.sh [BUILD_DIR]
set -euo pipefail
build=${1:-build}
here=$(cd "$(dirname "$0")/.." && pwd)
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
export XDG_CONFIG_HOME=$work/config XDG_DATA_HOME=$work/data TESK_COLOR_DIR=$work/color
teskcolor=$build/bin/teskcolor
press="$here/data/ColorProfile/ISO Coated (FOGRA39).icc"

"$teskcolor" chart --width 6000 --height 4000 "$work/in.tif" >/dev/null
srgb="$TESK_COLOR_DIR/sRGB Color Space Profile.icm"

measure() {  # label, command...
  local label=$1; shift
  local best=999999 peak=0
  for run in 1 2 3; do
    /usr/bin/time -f "%e %M" -o "$work/time" "$@" >/dev/null 2>&1
    read -r seconds kilobytes < "$work/time"
    best=$(awk -v a="$best" -v b="$seconds" 'BEGIN{print (b<a)?b:a}')
    peak=$kilobytes
  done
  printf '%-34s best of 3: %6.2f s   peak memory: %5d MB\n' "$label" "$best" "$((peak / 1024))"
}

measure "teskcolor separate (4 plates)" "$teskcolor" separate --invert --cmyk "$press" "$work/in.tif" "$work/plates.tif"
measure "teskcolor separate --packed" "$teskcolor" separate --packed --cmyk "$press" "$work/in.tif" "$work/packed.tif"
measure "tificc -c2 (packed CMYK)" tificc -c2 -t0 -i "$srgb" -o "$press" "$work/in.tif" "$work/tificc.tif"
