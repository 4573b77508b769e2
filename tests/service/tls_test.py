#!/usr/bin/env python3
"""tls_test.py PROGRAM FOLDER: checks that certificates are checked, and that a server without a good one gets no key.

PROGRAM authenticates with the service in force, which is a server of this script for each attempt. The certificate
authority is made for this run; the program is run where that authority is unknown, and in a mount namespace where the
system's list of authorities holds it as well."""
import os, shutil, socket, ssl, subprocess, sys, threading

PROGRAM, FOLDER = (os.path.abspath(path) for path in sys.argv[1:])
BUNDLE = "/etc/ssl/certs/ca-certificates.crt"
REPLY = b'HTTP/1.1 200 OK\r\nContent-Length: 29\r\n\r\n{"UID": 1, "Username": "ada"}'

# certify NAME EXTENSIONS [FROM UNTIL]: NAME.crt for "localhost" and NAME.key, signed by the authority.
CERTIFICATES = r"""
set -eu
new_key="-newkey ec -pkeyopt ec_paramgen_curve:P-256 -nodes"
certify() {
    openssl req $new_key -subj "/CN=localhost" -keyout "$1.key" -out "$1.csr"
    printf 'subjectAltName=DNS:localhost\n%s' "$2" >"$1.ext"
    openssl ca -batch -notext -config authority.cnf -in "$1.csr" -out "$1.crt" -extfile "$1.ext" \
        -startdate "${3:-20200101000000Z}" -enddate "${4:-20991231235959Z}"
}
openssl req -x509 $new_key -days 2 -subj "/CN=Test authority" -keyout authority.key -out authority.crt
openssl req -x509 $new_key -days 2 -subj "/CN=localhost" -addext "subjectAltName=DNS:localhost" \
    -keyout own.key -out own.crt
printf '[ca]\ndefault_ca = test\n[test]\ncertificate = authority.crt\nprivate_key = authority.key\ndatabase = index
new_certs_dir = .\nrand_serial = yes\nunique_subject = no\ndefault_md = sha256\npolicy = any
[any]\ncommonName = supplied\n' >authority.cnf
: >index
certify server ""
certify expired "" 20200101000000Z 20210101000000Z
certify future "" 20980101000000Z
certify client "extendedKeyUsage=clientAuth"
cat "$1" authority.crt >both.crt
"""

ACCEPTED = "accepted, the key was sent"
REFUSED = "Network error: SSL peer certificate or SSH remote key was not OK, the key was not sent"
NO_TLS = "Network error: SSL connect error, the key was not sent"

# Host, certificate (None: a server that speaks no TLS), whether the authority is known, reply, outcome.
ATTEMPTS = [
    ("localhost", "server", True, REPLY, ACCEPTED),
    ("127.0.0.1", "server", True, REPLY, REFUSED),
    ("localhost", "server", False, REPLY, REFUSED),
    *(("localhost", name, True, REPLY, REFUSED) for name in ("expired", "future", "client", "own")),
    ("127.0.0.1", None, False, REPLY, NO_TLS),
    ("127.0.0.1", None, False, b"", NO_TLS),
]


def serve_once(listener, certificate, reply, received):
    try:
        connection = listener.accept()[0]
        if certificate:
            context = ssl.SSLContext(ssl.PROTOCOL_TLS_SERVER)
            context.load_cert_chain(certificate + ".crt", certificate + ".key")
            connection = context.wrap_socket(connection, server_side=True)
        received += connection.recv(65536)
        connection.sendall(reply)
        if not certificate:
            connection.shutdown(socket.SHUT_WR)
        while more := connection.recv(65536):
            received += more
    except OSError:  # the program ended the connection
        pass


def attempt(host, certificate, is_known, reply):
    received = bytearray()
    with socket.create_server(("127.0.0.1", 0)) as listener:
        server = threading.Thread(target=serve_once, args=(listener, certificate, reply, received), daemon=True)
        server.start()
        environment = {name: value for name, value in os.environ.items() if not name.lower().endswith("_proxy")}
        environment["PLATTERSCOPE_SERVICE_URL"] = f"https://{host}:{listener.getsockname()[1]}"
        bind = ["unshare", "-rm", "sh", "-c", f'mount --bind both.crt {BUNDLE} && exec "$0"'] if is_known else []
        ended = subprocess.run(bind + [PROGRAM], env=environment, capture_output=True, text=True, timeout=50)
        server.join(5)
    return f"{ended.stdout.strip()}, the key was {'sent' if b'some key' in received else 'not sent'}"


if not shutil.which("openssl") or not os.access(BUNDLE, os.R_OK) or subprocess.run(["unshare", "-rm", "true"]).returncode:
    print("skipped: this needs the command openssl, the file", BUNDLE, "and the right to make a mount namespace")
    sys.exit(77)
shutil.rmtree(FOLDER, ignore_errors=True)
os.makedirs(FOLDER)
os.chdir(FOLDER)
subprocess.run(["sh", "-c", CERTIFICATES, "sh", BUNDLE], stderr=subprocess.DEVNULL, check=True)
outcomes = [(row, attempt(*row[:4])) for row in ATTEMPTS]
for row, outcome in outcomes:
    print("passed" if outcome == row[4] else f"FAILED, expected {row[4]}", *row[:3], outcome, sep=" | ")
sys.exit(any(outcome != row[4] for row, outcome in outcomes))
