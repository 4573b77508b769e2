#!/bin/sh
# tls_test.sh PROGRAM FOLDER: checks that certificates are checked. A certificate authority made for this run
# signs a certificate for "localhost"; the program is run where that authority is unknown, and in a mount
# namespace where the system's list of authorities holds it as well.
set -eu

program=$1
folder=$2
bundle=/etc/ssl/certs/ca-certificates.crt
refusal="Network error: SSL peer certificate or SSH remote key was not OK"

skip() {
    echo "skipped: $1"
    exit 77
}
command -v openssl >/dev/null || skip "there is no openssl command"
[ -r $bundle ] || skip "the system has no $bundle"
unshare -rm true 2>/dev/null || skip "this user may not make a mount namespace"

# expect WHERE ACTUAL EXPECTED
expect() {
    if [ "$2" != "$3" ]; then
        printf 'FAILED, authority %s\nexpected:\n%s\nactual:\n%s\n' "$1" "$3" "$2"
        exit 1
    fi
    printf 'passed, authority %s\n' "$1"
}

rm -rf "$folder"
mkdir -p "$folder"
cd "$folder"
openssl req -x509 -newkey ec -pkeyopt ec_paramgen_curve:P-256 -nodes -days 2 -subj "/CN=Test authority" \
    -keyout authority.key -out authority.crt 2>/dev/null
openssl req -newkey ec -pkeyopt ec_paramgen_curve:P-256 -nodes -subj "/CN=localhost" \
    -keyout server.key -out server.csr 2>/dev/null
echo "subjectAltName=DNS:localhost" >server.ext
openssl x509 -req -in server.csr -CA authority.crt -CAkey authority.key -CAcreateserial -days 2 \
    -extfile server.ext -out server.crt 2>/dev/null
cat $bundle authority.crt >both.crt

unset http_proxy https_proxy all_proxy HTTPS_PROXY ALL_PROXY
expect unknown "$("$program" server.crt server.key 2>/dev/null)" "localhost: $refusal
127.0.0.1: $refusal
requests served: 0"

expect trusted "$(unshare -rm sh -c "mount --bind both.crt $bundle && exec \"\$0\" server.crt server.key" \
    "$program" 2>/dev/null)" "localhost: accepted
127.0.0.1: $refusal
requests served: 1"
