#!/bin/bash
# Makes photo.jpg: a landscape drawn from noise, developed as a camera and a photo application would
# leave it: EXIF with a thumbnail and a position, IPTC texts, and an XMP packet with a lens name and
# tone-mapping settings. Needs awk, ImageMagick and ExifTool.
set -euo pipefail
cd "$(dirname "$0")"
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

awk '
function hash(i, k,   v) { v = sin(i * 12.9898 + k * 78.233) * 43758.5453; return v - int(v - (v < 0)) }
function noise(x, k,   i, t) {
  i = int(x); t = x - i; t = t * t * (3 - 2 * t)
  return hash(i, k) * (1 - t) + hash(i + 1, k) * t
}
function rough(x, k, octaves,   sum, amplitude) {
  sum = 0; amplitude = 0.5
  for (; octaves > 0; --octaves) { sum += amplitude * noise(x, k++); x *= 2.03; amplitude *= 0.5 }
  return sum
}
function mix(a, b, t) { return a + (b - a) * (t < 0 ? 0 : t > 1 ? 1 : t) }
function shade(x, y,   sun, sky, k, top, light) {
  # The sky at dawn, with the sun low behind the ridges and a few streaks of cloud.
  sun = exp(-((x - 0.68) ^ 2 * 5 + (y - 0.44) ^ 2 * 14))
  sky = y / 0.55
  red = mix(74, 247, sky * 0.8) + 70 * sun
  green = mix(112, 190, sky * 0.75) + 34 * sun
  blue = mix(170, 160, sky) - 18 * sun
  light = rough(x * 2.2 + y * 3 + 5, 40, 5) * exp(-((y - 0.2) ^ 2) * 22) - 0.36
  if (light > 0) { red += 210 * light; green += 150 * light; blue += 130 * light }
  for (k = 0; k < 4; ++k) {
    top = ridge[k, int(x * width)]
    if (y < top) continue
    light = rough(x * 26 + (y - top) * 14 * (k + 1), 60 + 9 * k, 4) - 0.5
    red = mix(150, 22, k / 3) + 40 * light; green = mix(140, 34, k / 3) + 36 * light
    blue = mix(160, 38, k / 3) + 30 * light
    # Snow on the far ridges, in the first light.
    if (k < 2 && y - top < 0.055 + 0.1 * light - 0.03 * k) { red = 236 - 26 * k + 60 * light; green = 205 - 20 * k + 60 * light; blue = 206 + 50 * light }
    # Haze gathers at the foot of each ridge.
    red = mix(red, 214, (y - top) * (3.0 - k)); green = mix(green, 182, (y - top) * (3.0 - k)); blue = mix(blue, 178, (y - top) * (3.0 - k))
  }
}
BEGIN {
  width = 720; height = 480; shore = 0.7
  for (x = 0; x < width; ++x) {
    u = x / width
    ridge[0, x] = 0.52 - 0.42 * rough(u * 4.6 + 1.3, 1, 7)
    ridge[1, x] = 0.62 - 0.36 * rough(u * 5.7 + 8.1, 11, 7)
    ridge[2, x] = 0.68 - 0.22 * rough(u * 6.4 + 3.7, 21, 6)
    ridge[3, x] = 0.725 - 0.13 * rough(u * 9.0 + 2.2, 31, 7)
  }
  printf "P3\n%d %d\n255\n", width, height
  for (row = 0; row < height; ++row) {
    y = row / height
    for (x = 0; x < width; ++x) {
      u = x / width
      if (y < shore) {
        shade(u, y)
      } else {
        # The lake mirrors what stands above the shore, broken by ripples.
        depth = (y - shore) / (1 - shore)
        ripple = (rough(u * 7 + 30, 80, 2) + noise(y * 160 + u * 3, 90) - 0.9) * (0.006 + 0.05 * depth)
        v = shore - (y - shore) * 1.9 + ripple
        shade(u, v < 0.02 ? 0.02 : v)
        red = red * 0.66 + 8; green = green * 0.72 + 14; blue = blue * 0.8 + 20
      }
      grain = 7 * (hash(x + row * 0.37, row) - 0.5)
      printf "%d %d %d\n", mix(0, 255, (red + grain) / 255), mix(0, 255, (green + grain) / 255), mix(0, 255, (blue + grain) / 255)
    }
  }
}' > "$work/photo.ppm"

convert "$work/photo.ppm" -strip -sampling-factor 4:2:0 -quality 82 "$work/photo.jpg"
convert "$work/photo.ppm" -strip -resize 160x -quality 75 "$work/thumbnail.jpg"

cat > "$work/packet.xmp" <<'XMP'
<x:xmpmeta xmlns:x='adobe:ns:meta/'>
<rdf:RDF xmlns:rdf='http://www.w3.org/1999/02/22-rdf-syntax-ns#'>

<rdf:Description rdf:about=''
xmlns:aux='http://ns.adobe.com/exif/1.0/aux/'>
<aux:Lens>16-35mm f/4 Wide</aux:Lens>
</rdf:Description>

<rdf:Description rdf:about=''
xmlns:lfst='http://ns.lumenforge.org/lumenforge_settings01'>
<lfst:Version>6.0</lfst:Version>
<lfst:Method>Tone Balancer</lfst:Method>
<lfst:Strength>62.0</lfst:Strength>
<lfst:Lighting>1.5</lfst:Lighting>
<lfst:Boost>0.0</lfst:Boost>
<lfst:Microcontrast>2.0</lfst:Microcontrast>
<lfst:WhiteClip>4.000</lfst:WhiteClip>
<lfst:BlackClip>3.000</lfst:BlackClip>
<lfst:IsPano360>No </lfst:IsPano360>
<lfst:Saturation>1.0</lfst:Saturation>
<lfst:ColorTemperature>-0.5</lfst:ColorTemperature>
<lfst:Brightness>0.5</lfst:Brightness>
<lfst:SaturationIndividualColors>0.0,0.0,0.0,0.0,0.0,1.0,0.0,0.0</lfst:SaturationIndividualColors>
<lfst:TemperatureIndividualColors>0.0,0.0,0.0,0.0,0.0,0.0,0.0,0.0</lfst:TemperatureIndividualColors>
<lfst:BrightnessIndividualColors>0.0,0.0,0.0,0.0,0.0,0.0,0.0,0.0</lfst:BrightnessIndividualColors>
<lfst:BlendingOpacity>0.0</lfst:BlendingOpacity>
<lfst:BlendWithEV>0.0</lfst:BlendWithEV>
</rdf:Description>

</rdf:RDF>
</x:xmpmeta>
XMP

exiftool -quiet -overwrite_original "-XMP<=$work/packet.xmp" "$work/photo.jpg"
exiftool -quiet -overwrite_original -n "-ThumbnailImage<=$work/thumbnail.jpg" \
  -EXIF:Make='Alpenglow' -EXIF:Model='Alpenglow M2' -EXIF:Orientation=1 \
  -EXIF:ExposureTime=1/250 -EXIF:FNumber=5.6 -EXIF:ISO=100 \
  -EXIF:FocalLength=24 -EXIF:FocalLengthIn35mmFormat=36 \
  -EXIF:FocalPlaneXResolution=2560 -EXIF:FocalPlaneResolutionUnit=3 \
  -EXIF:DateTimeOriginal='2021:06:05 07:14:59' \
  -EXIF:GPSLatitudeRef=S -EXIF:GPSLatitude=50.942389 \
  -EXIF:GPSLongitudeRef=W -EXIF:GPSLongitude=73.407028 \
  -EXIF:GPSAltitudeRef=0 -EXIF:GPSAltitude=214.5 \
  -EXIF:GPSTimeStamp='11:14:59' -EXIF:GPSDateStamp='2021:06:05' \
  -IPTC:Keywords=mountains -IPTC:Keywords=lake -IPTC:Keywords=dawn \
  -IPTC:Caption-Abstract='First light over the lake' "$work/photo.jpg"
mv "$work/photo.jpg" photo.jpg
