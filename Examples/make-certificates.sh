#!/usr/bin/env bash
# Makes the sample certificates in Examples/certificates anew, with fixed serial numbers and dates. Needs openssl. The
# private keys are thrown away, so each run gives other keys and signatures.
set -euo pipefail
out="$(cd "$(dirname "$0")" && pwd)/certificates"
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
cd "$work"

upn=1.3.6.1.4.1.311.20.2.3
logon=1.3.6.1.4.1.311.20.2.2
agent=1.3.6.1.4.1.311.20.2.1
file_system=1.3.6.1.4.1.311.10.3.4

mkdir -p issued && touch index.txt
cat >ca.cnf <<EOF
[ca]
default_ca = sample
[sample]
database = index.txt
new_certs_dir = issued
serial = serial
default_md = sha256
policy = any
unique_subject = no
copy_extensions = none
[any]
countryName = optional
organizationName = optional
organizationalUnitName = optional
commonName = supplied
EOF

key() { openssl genpkey -quiet -algorithm RSA -pkeyopt rsa_keygen_bits:2048 -out "$1.key"; }

# issue <file> <serial, hex> <first day> <last day> <subject>, extensions on standard input. A day is YYYYMMDD.
issue() {
  local file=$1 serial=$2 from=$3 to=$4 subject=$5
  key subject
  openssl req -new -key subject.key -subj "$subject" -out subject.csr
  echo "$serial" >serial
  { printf '[extensions]\nsubjectKeyIdentifier = hash\nauthorityKeyIdentifier = keyid\nbasicConstraints = CA:FALSE\n'; cat; } >extensions.cnf
  openssl ca -batch -notext -config ca.cnf -cert ca.pem -keyfile ca.key -in subject.csr -extfile extensions.cnf \
    -extensions extensions -startdate "${from}000000Z" -enddate "${to}235959Z" -out "$out/$file" 2>openssl.log ||
    { cat openssl.log; exit 1; }
}

key ca
openssl req -x509 -new -key ca.key -set_serial 1 -days 1 -subj "/C=DE/O=Example Cards/CN=Example Card CA" -out ca.pem

rm -f "$out"/*
mkdir -p "$out"
person="/C=DE/O=Example Cards/OU=People"

issue ada-logon.pem 1001 20240101 20491231 "$person/CN=Ada Lehmann" <<EOF
keyUsage = critical, digitalSignature, keyEncipherment
extendedKeyUsage = $logon, clientAuth
subjectAltName = otherName:$upn;UTF8:ada.lehmann@example.org, email:ada.lehmann@example.org
EOF

issue ben-no-signature-bit.pem 1002 20240101 20491231 "$person/CN=Ben Okafor" <<EOF
keyUsage = critical, keyEncipherment
extendedKeyUsage = $logon, clientAuth
subjectAltName = otherName:$upn;UTF8:ben.okafor@example.org
EOF

issue cleo-no-principal-name.pem 1003 20240101 20491231 "$person/CN=Cleo Martin" <<EOF
keyUsage = critical, digitalSignature
extendedKeyUsage = $logon, clientAuth
subjectAltName = email:cleo.martin@example.org
EOF

issue dora-enrolment-agent.pem 1004 20240101 20491231 "$person/CN=Dora Silva" <<EOF
keyUsage = critical, digitalSignature
extendedKeyUsage = $agent
EOF

issue emil-file-encryption.pem 1005 20240101 20491231 "$person/CN=Emil Novak" <<EOF
keyUsage = keyEncipherment
extendedKeyUsage = $file_system
subjectAltName = otherName:$upn;UTF8:emil.novak@example.org
EOF

issue fay-expired.pem 1006 20180101 20201231 "$person/CN=Fay Larsen" <<EOF
keyUsage = critical, digitalSignature
extendedKeyUsage = $logon
subjectAltName = otherName:$upn;UTF8:fay.larsen@example.org
EOF

issue gita-client-only.pem 1007 20240101 20491231 "$person/CN=Gita Rao" <<EOF
keyUsage = critical, digitalSignature
extendedKeyUsage = clientAuth
subjectAltName = otherName:$upn;UTF8:gita.rao@example.org
EOF

# A transfer that stopped half way.
openssl x509 -in "$out/ada-logon.pem" -outform DER | head -c 600 >"$out/hugo-cut-short.der"
