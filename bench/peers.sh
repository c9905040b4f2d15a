#!/usr/bin/env bash
# teskcolor beside lcms2's tificc and libvips on the same photo-like inputs:
# convert (sRGB to Adobe RGB), 16-bit convert, separate --packed and plates,
# at 1 and 24 megapixels. Each figure is the median of RUNS whole-process runs
# (wall, user+system CPU, peak memory), with the load average beside it: the
# machine may be shared, and a busy one slows everything.
#   bench/peers.sh [BUILD_DIR] [RUNS]
# Needs: tificc (liblcms2-utils), vips (libvips-tools), GNU time.
set -euo pipefail
build=${1:-build}
runs=${2:-5}
here=$(cd "$(dirname "$0")/.." && pwd)
for tool in tificc vips /usr/bin/time; do
  command -v "$tool" >/dev/null || { echo "peers.sh: $tool is not installed" >&2; exit 2; }
done
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
export XDG_CONFIG_HOME=$work/config XDG_DATA_HOME=$work/data TESK_COLOR_DIR=$work/color TESKCOLOR_NO_PROGRESS=1
teskcolor=$(cd "$build" && pwd)/bin/teskcolor
press="$here/data/ColorProfile/ISO Coated (FOGRA39).icc"

# The working space's profile as teskcolor writes it, and an Adobe RGB one.
"$teskcolor" chart --width 32 --height 32 "$work/tiny.tif" >/dev/null
srgb="$TESK_COLOR_DIR/sRGB Color Space Profile.icm"
"$teskcolor" make-profile --primaries adobe "$work/adobe.icc" >/dev/null

# Photo-like: smooth noise at three scales, one a channel, with fine grain on
# top; flat charts flatter a one-pixel cache.
photo() {  # name width height
  local w=$2 h=$3
  vips perlin "$work/r.v" "$w" "$h" --cell-size $((w / 20))
  vips perlin "$work/g.v" "$w" "$h" --cell-size $((w / 35))
  vips perlin "$work/b.v" "$w" "$h" --cell-size $((w / 12))
  vips bandjoin "$work/r.v $work/g.v $work/b.v" "$work/rgb.v"
  vips gaussnoise "$work/n.v" "$w" "$h" --sigma 0.15 --mean 0
  vips add "$work/rgb.v" "$work/n.v" "$work/sum.v"
  vips linear "$work/sum.v" "$work/8.v" 140 128 --uchar
  vips tiffsave "$work/8.v" "$work/$1.tif" --compression deflate --predictor horizontal --profile "$srgb"
  vips linear "$work/8.v" "$work/16f.v" 257 0
  vips cast "$work/16f.v" "$work/16c.v" ushort
  vips copy "$work/16c.v" "$work/16.v" --interpretation rgb16
  vips tiffsave "$work/16.v" "$work/$1-16.tif" --compression deflate --predictor horizontal --profile "$srgb"
  rm -f "$work"/*.v
}
photo p1 1225 816
photo p24 6000 4000

median() { sort -g | awk '{v[NR]=$1} END {print v[int((NR+1)/2)]}'; }

measure() {  # label, command...
  local label=$1; shift
  : >"$work/walls"; : >"$work/cpus"; : >"$work/peaks"
  "$@" >/dev/null 2>&1  # warm-up
  for ((run = 0; run < runs; run++)); do
    /usr/bin/time -f "%e %U %S %M" -o "$work/time" "$@" >/dev/null 2>&1
    read -r wall user sys kb <"$work/time"
    echo "$wall" >>"$work/walls"
    awk -v u="$user" -v s="$sys" 'BEGIN{print u + s}' >>"$work/cpus"
    echo $((kb / 1024)) >>"$work/peaks"
  done
  printf '%-44s %7.3f s %7.3f s %6d MiB   load %s\n' "$label" "$(median <"$work/walls")" "$(median <"$work/cpus")" \
    "$(median <"$work/peaks")" "$(cut -d' ' -f1-3 /proc/loadavg)"
}

printf '%-44s %9s %9s %10s   %s\n' "median of $runs runs" wall cpu peak "load (1, 5, 15 min)"
for size in p1 p24; do
  in=$work/$size.tif
  in16=$work/$size-16.tif
  echo "-- $size: $(vipsheader "$in")"
  measure "teskcolor convert sRGB -> Adobe RGB" "$teskcolor" convert --to "$work/adobe.icc" "$in" "$work/o.tif"
  # tificc keeps the input's compression (deflate here); the uncompressed rows show teskcolor without the encoder.
  measure "teskcolor convert --compression none" "$teskcolor" convert --compression none --to "$work/adobe.icc" "$in" "$work/o.tif"
  measure "tificc -c2 sRGB -> Adobe RGB" tificc -c2 -t1 "-i$srgb" "-o$work/adobe.icc" "$in" "$work/o.tif"
  measure "vips icc_transform sRGB -> Adobe RGB" vips icc_transform "$in" "$work/o.tif[compression=deflate,predictor=horizontal]" "$work/adobe.icc" --embedded --intent relative
  measure "teskcolor convert, 16-bit" "$teskcolor" convert --to "$work/adobe.icc" "$in16" "$work/o.tif"
  measure "tificc -c2 -w16, 16-bit" tificc -c2 -t1 -w16 "-i$srgb" "-o$work/adobe.icc" "$in16" "$work/o.tif"
  measure "vips icc_transform, 16-bit" vips icc_transform "$in16" "$work/o.tif[compression=deflate,predictor=horizontal]" "$work/adobe.icc" --embedded --intent relative --depth 16
  measure "teskcolor separate --packed" "$teskcolor" separate --packed --cmyk "$press" "$in" "$work/o.tif"
  measure "teskcolor separate (four plates)" "$teskcolor" separate --cmyk "$press" "$in" "$work/plates.tif"
  measure "teskcolor separate --packed, uncompressed" "$teskcolor" separate --packed --compression none --cmyk "$press" "$in" "$work/o.tif"
  measure "tificc -c2 to CMYK" tificc -c2 -t0 "-i$srgb" "-o$press" "$in" "$work/o.tif"
  measure "vips icc_transform to CMYK" vips icc_transform "$in" "$work/o.tif[compression=deflate,predictor=horizontal]" "$press" --embedded --intent perceptual
done
