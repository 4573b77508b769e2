#!/bin/sh
# tls_test.sh PROGRAM FOLDER: checks that certificates are checked. A certificate authority made for this run
# signs a certificate for "localhost"; the program is run where that authority is unknown, and in a mount
# namespace where the system's list of authorities holds it as well. So are certificates that the authority signed and
# that are still no good.
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

# record FAULT ANSWER CASES: rows of the table of faults, where one is asked for.
record() {
    [ -z "${PLATTERSCOPE_FAULT_TABLE:-}" ] || printf 'Service: https with %s\t%s\t%d\n' "$1" "$2" "$3" \
        >>"$PLATTERSCOPE_FAULT_TABLE"
}

# certify NAME EXTENSIONS [FROM UNTIL]: NAME.crt for "localhost" and NAME.key, signed by the authority.
certify() {
    openssl req -newkey ec -pkeyopt ec_paramgen_curve:P-256 -nodes -subj "/CN=localhost" \
        -keyout "$1.key" -out "$1.csr" 2>/dev/null
    printf 'subjectAltName=DNS:localhost\n%s' "$2" >"$1.ext"
    openssl ca -batch -notext -config authority.cnf -in "$1.csr" -out "$1.crt" -extfile "$1.ext" \
        -startdate "${3:-20200101000000Z}" -enddate "${4:-20991231235959Z}" 2>/dev/null
}

# run_trusted ARGUMENT...: the program where the system knows the authority.
run_trusted() {
    unshare -rm sh -c "mount --bind both.crt $bundle && exec \"\$0\" \"\$@\"" "$program" "$@" 2>/dev/null
}

rm -rf "$folder"
mkdir -p "$folder"
cd "$folder"
openssl req -x509 -newkey ec -pkeyopt ec_paramgen_curve:P-256 -nodes -days 2 -subj "/CN=Test authority" \
    -keyout authority.key -out authority.crt 2>/dev/null
openssl req -x509 -newkey ec -pkeyopt ec_paramgen_curve:P-256 -nodes -days 2 -subj "/CN=localhost" \
    -addext "subjectAltName=DNS:localhost" -keyout own.key -out own.crt 2>/dev/null
cat >authority.cnf <<END
[ca]
default_ca = test
[test]
certificate = authority.crt
private_key = authority.key
database = index
new_certs_dir = .
rand_serial = yes
unique_subject = no
default_md = sha256
policy = any
[any]
commonName = supplied
END
: >index
certify server ""
certify expired "" 20200101000000Z 20210101000000Z
certify future "" 20980101000000Z
certify client "extendedKeyUsage=clientAuth"
cat $bundle authority.crt >both.crt

refused="localhost: $refusal
127.0.0.1: $refusal
requests served: 0"

unset http_proxy https_proxy all_proxy HTTPS_PROXY ALL_PROXY
expect unknown "$("$program" server.crt server.key 2>/dev/null)" "$refused"
expect trusted "$(run_trusted server.crt server.key)" "localhost: accepted
127.0.0.1: $refusal
requests served: 1"
for name in expired future client own; do
    expect "trusted, certificate $name" "$(run_trusted $name.crt $name.key)" "$refused"
done
record "a certificate of an unknown authority, for another name or purpose, expired, not yet valid or self-signed" \
    "refused before anything is sent" 6

expect "none: no TLS" "$(run_trusted)" "plain HTTP: 127.0.0.1: Network error: SSL connect error
the key was not sent
closed: 127.0.0.1: Network error: SSL connect error
the key was not sent"
record "a server that speaks no TLS or ends the connection" "an error that says so; the key is not sent" 2
