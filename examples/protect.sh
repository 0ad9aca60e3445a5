#!/usr/bin/env bash
# Packages a clip under protection with keys made on the spot, then plays license server and player:
# decrypts the segments with the server's private key alone, and compares with a clear run.
#
# usage: examples/protect.sh [clip.flv [folder]]
#
# The folder (out/protect) is emptied first. KZSPACKAGER and KZSDECRYPT name the two programs; without
# them they are built.
set -euo pipefail
top=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
clip=${1:-$top/tests/data/media/h264_aac_20s.flv}
out=${2:-$top/out/protect}

if [ -z "${KZSPACKAGER:-}" ] || [ -z "${KZSDECRYPT:-}" ]; then
    (cd "$top" && cmake --preset release -DKZ_EXAMPLES=ON >/dev/null &&
        cmake --build --preset release --target kzspackager kzsdecrypt >/dev/null)
fi
packager=${KZSPACKAGER:-$top/build/release/kzspackager}
decrypt=${KZSDECRYPT:-$top/build/release/kzsdecrypt}

rm -rf "$out"
mkdir -p "$out/keys" "$out/packager"
keys=$out/keys        # the license server's side
files=$out/packager   # what the packager is given

# One authority for all certificates.
openssl req -x509 -newkey rsa:2048 -noenc -days 3650 -subj "/CN=Example Authority" \
    -keyout "$keys/authority.key" -out "$keys/authority.pem" 2>/dev/null

# certificate NAME USAGE: a key and a certificate of the authority for it
certificate() {
    openssl req -newkey rsa:2048 -noenc -subj "/CN=Example $1" \
        -keyout "$keys/$1.key" -out "$keys/$1.csr" 2>/dev/null
    openssl x509 -req -in "$keys/$1.csr" -CA "$keys/authority.pem" -CAkey "$keys/authority.key" \
        -CAcreateserial -days 365 -out "$keys/$1.pem" \
        -extfile <(echo "keyUsage=critical,$2") 2>/dev/null
}
certificate transport keyEncipherment
certificate server keyEncipherment
certificate packager digitalSignature

# The packager gets two certificates, its credential, the common key and the policy.
openssl x509 -in "$keys/transport.pem" -outform DER -out "$files/transport.der"
openssl x509 -in "$keys/server.pem" -outform DER -out "$files/server.der"
openssl pkcs12 -export -inkey "$keys/packager.key" -in "$keys/packager.pem" \
    -passout pass:example -out "$files/packager.pfx"
openssl rand -out "$files/common.key" 32
echo '<policy><play from="2020-01-01"/></policy>' >"$files/policy.xml"

name=$(basename "$clip")
name=${name%.*}
"$packager" --input-file="$clip" --output-path="$out/clear"
"$packager" --input-file="$clip" --output-path="$out/protected" --dump-drm-metadata \
    --content-id="$name" --common-key="$files/common.key" --policy-file="$files/policy.xml" \
    --license-server-url=https://license.example/ \
    --transport-cert="$files/transport.der" --license-server-cert="$files/server.der" \
    --packager-credential="$files/packager.pfx" --credential-pwd=example

# The license server can look into the metadata with the openssl command as well.
openssl cms -decrypt -binary -inform DER -in "$out/protected/drmmetadata.bin" \
    -inkey "$keys/server.key" -recip "$keys/server.pem" |
    openssl cms -verify -binary -inform DER -CAfile "$keys/authority.pem" -purpose any \
        -out "$out/record.der" 2>/dev/null
echo "the record of the metadata: $(wc -c <"$out/record.der") bytes"

"$decrypt" --authority="$keys/authority.pem" "$keys/server.key" "$out/decrypted.flv" \
    "$out/protected/${name}"Seg*.kzs
"$decrypt" "$keys/server.key" "$out/clear.flv" "$out/clear/${name}"Seg*.kzs

if cmp "$out/clear.flv" "$out/decrypted.flv"; then
    echo "decrypted samples are those of the clear run: $(wc -c <"$out/decrypted.flv") bytes"
else
    echo "decrypted samples differ from those of the clear run" >&2
    exit 1
fi
# Another key opens nothing.
if "$decrypt" "$keys/transport.key" "$out/nothing.flv" "$out/protected/${name}"Seg*.kzs 2>/dev/null; then
    echo "a wrong key opened the metadata" >&2
    exit 1
fi
rm -f "$out/nothing.flv"
echo "see $out"
