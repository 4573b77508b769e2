#!/usr/bin/env bash
# Authors a small DVD-Video disc from test pictures and tones: OUT_DIR/VIDEO_TS and OUT_DIR/AUDIO_TS.
#
#   tools/author_dvd.sh OUT_DIR [pal|ntsc]
#
#   pal   title set 1: one title of 20 s, 16:9, 4 chapters, AC-3 (English) and MPEG audio (German),
#                      subtitles in English and German
#         title set 2: one title of 8 s, 4:3 at 352x576, 2 chapters, AC-3 5.1 (English) and LPCM (German),
#                      subtitles in English
#   ntsc  title set 1: two titles of 12 s and 8 s, 16:9, 3 and 1 chapters, AC-3 5.1 (English) and
#                      AC-3 stereo (German), subtitles in English
#
# The output is reproducible. Packages: tools/setup.sh dvd-authoring
set -euo pipefail

usage() {
    echo "usage: tools/author_dvd.sh OUT_DIR [pal|ntsc]" >&2
    exit 2
}

[[ $# -ge 1 && $# -le 2 && -n $1 ]] || usage
standard=${2:-pal}
case $standard in
    pal) rate=25 height=576 ;;
    ntsc) rate=30000/1001 height=480 ;;
    *) usage ;;
esac
mkdir -p "$1"
out=$(realpath "$1")
[[ ! -e $out/VIDEO_TS ]] || { echo "author_dvd: $out/VIDEO_TS exists already" >&2; exit 1; }

# Works in a temporary folder and moves the result at the end, so a failed run leaves no partial disc.
work=$(mktemp -d "$out/.authoring.XXXXXX")
trap 'rm -rf "$work"' EXIT
cd "$work"
export HOME=$work            # where spumux searches fonts first
export VIDEO_FORMAT=$standard

# Runs a tool; shows its output only if it fails.
quietly() {
    "$@" >tool.log 2>&1 || { cat tool.log >&2; echo "author_dvd: $1 failed" >&2; exit 1; }
}

# video NAME SECONDS WIDTH ASPECT AUDIO_OPTION...
# Makes NAME.mpg with a moving picture and two tones; the options choose the codec of each tone.
video() {
    local name=$1 seconds=$2 width=$3 aspect=$4
    shift 4
    quietly ffmpeg -nostdin -y -threads 1 -filter_threads 1 \
        -f lavfi -i "testsrc2=size=${width}x$height:rate=$rate:duration=$seconds" \
        -f lavfi -i "sine=frequency=440:sample_rate=48000:duration=$seconds" \
        -f lavfi -i "sine=frequency=660:sample_rate=48000:duration=$seconds" \
        -map 0:v -map 1:a -map 2:a -target "$standard-dvd" \
        -s "${width}x$height" -aspect "$aspect" -b:v 1500k -threads 1 \
        "$@" -flags +bitexact -fflags +bitexact "$name.mpg"
}

# subtitles NAME STREAM TEXT: adds TEXT, shown from second 1 to 3 and from 4 to 6, to NAME.mpg.
subtitles() {
    cat >text.srt <<END
1
00:00:01,000 --> 00:00:03,000
$3

2
00:00:04,000 --> 00:00:06,000
$3 2
END
    cat >spumux.xml <<END
<subpictures format="${standard^^}"><stream>
  <textsub filename="text.srt" characterset="UTF-8" font="DejaVuSans.ttf" fontsize="28"
           horizontal-alignment="center" vertical-alignment="bottom"
           movie-width="702" movie-height="$((height - 4))"/>
</stream></subpictures>
END
    quietly sh -c "spumux -s $2 spumux.xml <$1.mpg >$1.sub.mpg"
    mv "$1.sub.mpg" "$1.mpg"
}

# Uses the font of this folder, so that the machine's font settings do not matter.
mkdir .spumux
ln -s /usr/share/fonts/truetype/dejavu/DejaVuSans.ttf .spumux/

stereo=(-ac 2)
if [[ $standard == pal ]]; then
    video one 20 720 16:9 "${stereo[@]}" -c:a:0 ac3 -b:a:0 192k -c:a:1 mp2 -b:a:1 224k
    subtitles one 0 "First title"
    subtitles one 1 "Erster Titel"
    video two 8 352 4:3 -c:a:0 pcm_dvd -ac:a:0 2 -c:a:1 ac3 -b:a:1 384k -ac:a:1 6
    subtitles two 0 "Second title"
    cat >dvd.xml <<END
<dvdauthor>
  <vmgm/>
  <titleset><titles>
    <video format="pal" aspect="16:9"/>
    <audio lang="en"/> <audio lang="de"/>
    <subpicture lang="en"/> <subpicture lang="de"/>
    <pgc><vob file="one.mpg" chapters="0,0:05,0:10,0:15"/></pgc>
  </titles></titleset>
  <titleset><titles>
    <video format="pal" aspect="4:3"/>
    <audio lang="en"/> <audio lang="de"/>
    <subpicture lang="en"/>
    <pgc><vob file="two.mpg" chapters="0,0:04"/></pgc>
  </titles></titleset>
</dvdauthor>
END
else
    audio=(-c:a ac3 -ac:a:0 6 -b:a:0 384k -ac:a:1 2 -b:a:1 192k)
    video one 12 720 16:9 "${audio[@]}"
    subtitles one 0 "First title"
    video two 8 720 16:9 "${audio[@]}"
    subtitles two 0 "Second title"
    cat >dvd.xml <<END
<dvdauthor>
  <vmgm/>
  <titleset><titles>
    <video format="ntsc" aspect="16:9"/>
    <audio lang="en"/> <audio lang="de"/>
    <subpicture lang="en"/>
    <pgc><vob file="one.mpg" chapters="0,0:04,0:08"/></pgc>
    <pgc><vob file="two.mpg"/></pgc>
  </titles></titleset>
</dvdauthor>
END
fi
quietly dvdauthor -o disc -x dvd.xml

mv disc/AUDIO_TS disc/VIDEO_TS "$out/"
echo "author_dvd: $standard disc in $out"
