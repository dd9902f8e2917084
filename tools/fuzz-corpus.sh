#!/usr/bin/env bash
# fuzz-corpus.sh: writes the seeds of every fuzz target into
# tests/fuzz/corpus/<target>, made the way the tests make their inputs:
# sounds with FFmpeg's sine source (as tests/support/SoundFiles does), the
# replies, records and requests as the tests and the service write them.
# Seeds are kept small: short sounds, one file a case. Inputs that once
# failed (failure-*, crash-*, leak-*, timeout-*, oom-*) are left alone.
set -euo pipefail
here=$(cd "$(dirname "$0")/.." && pwd)
corpus=$here/tests/fuzz/corpus
scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT

seed() {  # seed <target> <name> <text>: the text as it stands, no line end added
  mkdir -p "$corpus/$1"
  printf '%s' "$3" >"$corpus/$1/$2"
}

# Sound files: the first byte picks the extension the reader sees
# (0 .mp3, 1 .wav, 2 .wma, 3 .amr), the rest is the file.
sound() {  # sound <name> <selector> <ffmpeg output options...>
  local name=$1 selector=$2 ext
  shift 2
  ext=$(case $selector in 0) echo mp3 ;; 1) echo wav ;; 2) echo wma ;; 3) echo amr ;; esac)
  ffmpeg -v error -y -f lavfi -i "sine=frequency=440:duration=0.3" "$@" "$scratch/$name.$ext"
  for target in fuzz_audio_open fuzz_audio_info; do
    mkdir -p "$corpus/$target"
    { printf "\\x0$selector"; cat "$scratch/$name.$ext"; } >"$corpus/$target/$name"
  done
}
sound mp3-8k-mono 0 -ar 8000 -ac 1 -c:a libmp3lame -b:a 8k
sound mp3-44k-stereo 0 -ar 44100 -ac 2 -c:a libmp3lame -b:a 32k
sound mp3-vbr-tagged 0 -ar 22050 -ac 1 -c:a libmp3lame -q:a 9 -metadata title="Song Ü" \
  -metadata artist="The Band" -metadata track=7/12 -metadata date=1999 -metadata album_artist=Various
sound wav-s16-8k 1 -ar 8000 -ac 1 -c:a pcm_s16le
sound wav-u8-11k 1 -ar 11025 -ac 2 -c:a pcm_u8
sound wav-f32-16k 1 -ar 16000 -ac 1 -c:a pcm_f32le
sound wma-22k 2 -ar 22050 -ac 1 -c:a wmav2 -b:a 32k -metadata title=Tone
sound amr-nb 3 -ar 8000 -ac 1 -c:a libopencore_amrnb -b:a 12.2k

# "Login.asp?": the rows of tst_login.
seed fuzz_login_reply eleven-fields '1,42,Kim,Lee,1,101,1,3,2,MP3,It costs A$2.'
seed fuzz_login_reply quills-over-16-bits '1,42,a,b,c,d,e,40000,f,WAV,x'
seed fuzz_login_reply quills-half '1,1,a,b,c,d,e,2.5'
seed fuzz_login_reply refused '0'
seed fuzz_login_reply unreachable 'err'

# The list pages as the service writes them: id,name, pairs with a trailing ","
# and the providers in groups of five.
seed fuzz_list_pages countries '1,Australia,2,New Zealand,'
seed fuzz_list_pages vendors '3,Nokia,4,Motorola,'
seed fuzz_list_pages providers '1,Telstra,1,04,10,2,Optus,1,04,10,'

# "ReferFriends.asp?" and "LookupMobileNumber.asp?".
seed fuzz_referral_reply two-friends $'1,Ann,+61400000001\r\n0,Bob,+61400000002\r\n'
seed fuzz_referral_reply already $'A friend with mobile number +61400000003 is already in system'
seed fuzz_referral_reply no-more 'No more referrals available'

# "AnnouncementRead.asp?": a text whole, line breaks and all.
seed fuzz_announcement two-lines $'Welcome to Quillo Tone!\r\nThree free quills are yours.'

# "SendT2.asp": the rows of tst_delivery and the service's refusals.
seed fuzz_upload_reply delivered '1,5,https://127.0.0.1:8443/tones/0123456789abcdef0123456789abcdef'
seed fuzz_upload_reply empty-third '1,OK,'
seed fuzz_upload_reply refused '0,4,Missing field xmldata'

# "MyMusic.xml" as the search and the start-up write it.
seed fuzz_library two-folders '<?xml version="1.0"?><Quillotone><Folder Path="/home/kim/Music"/><Folder Path="/home/kim/Music/Old &amp; New"/></Quillotone>'
seed fuzz_library searched-empty '<?xml version="1.0"?><Quillotone></Quillotone>'
seed fuzz_library declined-empty '<?xml version="1.0" ?><Quillotone></Quillotone>'

# Stored values under the pass phrase the target uses ("fuzz"): AES-256-CBC,
# the key the SHA-256 of the phrase, the IV in front, upper-case hexadecimal.
key=$(printf fuzz | sha256sum | cut -c1-64)
for value in secret 0400000000 ''; do
  iv=$(printf '%s' "$value" | md5sum | cut -c1-32)  # fixed, so that the seeds stay as they are
  cipher=$(printf '%s' "$value" | openssl enc -aes-256-cbc -K "$key" -iv "$iv" | od -An -tx1 | tr -d ' \n')
  seed fuzz_decrypt "value-${value:-empty}" "$(printf '%s%s' "$iv" "$cipher" | tr a-f A-F)"
done

# The tone record (the upload's "xmldata=", the tunnel road's "ToneData").
record='<Message ContentType="audio/amr" Filename="20240101120000.amr" MobileNumber="0400000000" MobileData="00" QueueData="" Status="Ready"/>'
seed fuzz_tone_record amr "$record"

# The service: whole requests as the program sends them, and upload bodies
# from the account the target makes (0400000000, "secret").
account='MobileNumber=0400000000&Password=secret'
seed fuzz_service_request login $'GET /Login.asp?'"$account"$' HTTP/1.1\r\nHost: 127.0.0.1\r\n\r\n'
seed fuzz_service_request countries $'GET /GetCountryList.asp HTTP/1.1\r\nHost: 127.0.0.1\r\n\r\n'
seed fuzz_service_request models $'GET /GetTerminalTypeList.asp?TerminalVendorID=1 HTTP/1.1\r\nHost: 127.0.0.1\r\n\r\n'
seed fuzz_service_request refer $'GET /ReferFriends.asp?Name1=Ann&MobileNumber1=0400000001&'"$account"$' HTTP/1.1\r\nHost: 127.0.0.1\r\n\r\n'
song="$account&Artist=A&Title=B"
seed fuzz_service_request song $'POST /PostSongData.asp HTTP/1.1\r\nHost: 127.0.0.1\r\nContent-Length: '"${#song}"$'\r\nContent-Type: application/x-www-form-urlencoded\r\n\r\n'"$song"
seed fuzz_service_request chunked $'POST /SendT2.asp HTTP/1.1\r\nHost: 127.0.0.1\r\nTransfer-Encoding: chunked\r\n\r\n5\r\nMobil\r\n0\r\n\r\n'
xml=$(printf '%s' "$record" | sed 's/ /%20/g; s/"/%22/g; s/</%3C/g; s/>/%3E/g; s/=/%3D/g; s/\//%2F/g')
seed fuzz_upload_body amr "$account&xmldata=$xml&tonedata1=2321414D520A"
seed fuzz_upload_body no-tone "$account&xmldata=$xml&tonedata1="

# A disc image's CUE sheet as tests/support/DiscImage writes it.
seed fuzz_cue_sheet two-tracks $'FILE "disc.bin" BINARY\r\n  TRACK 01 AUDIO\r\n    INDEX 01 00:00:00\r\n  TRACK 02 AUDIO\r\n    INDEX 00 00:02:00\r\n    INDEX 01 00:04:00\r\n'

# A CDDB server's answers to the query and the read, a NUL between them, as
# the tests' CDDB server gives them.
mkdir -p "$corpus/fuzz_cddb_answer"
query=$'200 rock 0a00a002 The Band / First\r\n'
read=$'210 rock 0a00a002 CD database entry follows (until terminating `.\')\r\n# xmcd\r\n#\r\n# Track frame offsets:\r\n#\t150\r\n#\t225\r\n#\r\n# Disc length: 4 seconds\r\n#\r\nDISCID=0a00a002\r\nDTITLE=The Band / First\r\nTTITLE0=One\r\nTTITLE1=Two\r\n.\r\n'
{ printf '%s' "$query"; printf '\0'; printf '%s' "$read"; } >"$corpus/fuzz_cddb_answer/found"
seed fuzz_cddb_answer no-match $'202 No match for disc ID 0a00a002.\r\n'

echo "Seeds written to $corpus"
