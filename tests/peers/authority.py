"""A certificate authority of a run: certificates for servers, good ones and bad ones, and for a client."""
import ssl
import subprocess

HERE = "DNS:localhost,IP:127.0.0.1,IP:::1"
NOW = "20200101000000Z", "20990101000000Z"
AUTHORITIES = {"ca": None, "stranger": None, "middle": "ca"}  # name: who signs it
LEAVES = {  # name: who signs it, for whom, from when, until when
    "good": ("ca", HERE, *NOW),
    "wrong": ("ca", "DNS:other.test,IP:192.0.2.9", *NOW),
    "expired": ("ca", HERE, "20200101000000Z", "20210101000000Z"),
    "early": ("ca", HERE, "20900101000000Z", "20990101000000Z"),
    "foreign": ("stranger", HERE, *NOW),
    "orphan": ("middle", HERE, *NOW),
    "client": ("ca", "DNS:client.test", *NOW),
}
STORES = {  # file: what it is put together from
    "own.pem": "ca.pem client.pem client.key", "crossed.pem": "ca.pem client.pem good.key", "keys.pem": "own.pem good.key",
    "locked.pem": "ca.pem client.pem client.locked", "key.pem": "good.key", "lonely.pem": "client.pem client.key",
}
CONFIG = """[ca]\ndefault_ca=one\n[one]\ndatabase=index\nnew_certs_dir=.\nrand_serial=yes\ndefault_md=sha256\npolicy=any
unique_subject=no\n[any]\ncommonName=supplied\n"""


def make(folder):
    folder.mkdir(parents=True, exist_ok=True)

    def openssl(*words):
        subprocess.run(["openssl", *words], cwd=folder, check=True, capture_output=True)

    def sign(name, issuer, start, end, *extensions):
        (folder / "extensions").write_text("\n".join(extensions))
        openssl("req", "-newkey", "ec", "-pkeyopt", "ec_paramgen_curve:P-256", "-nodes", "-subj", f"/CN={name}",
                "-keyout", f"{name}.key", "-out", "request")
        signer = ("-cert", f"{issuer}.pem") if issuer else ("-selfsign",)
        openssl("ca", "-batch", "-notext", "-config", "config", *signer, "-keyfile", f"{issuer or name}.key", "-in", "request",
                "-startdate", start, "-enddate", end, "-extfile", "extensions", "-out", f"{name}.pem")

    (folder / "config").write_text(CONFIG)
    (folder / "index").write_text("")
    for name, issuer in AUTHORITIES.items():
        sign(name, issuer, *NOW, "basicConstraints=critical,CA:TRUE", "keyUsage=critical,keyCertSign,cRLSign")
    for name, (issuer, alternatives, start, end) in LEAVES.items():
        sign(name, issuer, start, end, f"subjectAltName={alternatives}", "keyUsage=digitalSignature")
    sign("self", None, *NOW, f"subjectAltName={HERE}")
    openssl("ec", "-in", "client.key", "-aes128", "-passout", "pass:x", "-out", "client.locked")
    openssl("ca", "-config", "config", "-gencrl", "-crldays", "9", "-cert", "ca.pem", "-keyfile", "ca.key", "-out", "list.pem")
    for name, parts in STORES.items():
        (folder / name).write_text("".join((folder / part).read_text() for part in parts.split()))
    (folder / "cut.pem").write_text((folder / "ca.pem").read_text()[:200])
    return folder


def wrapper(folder):
    """What makes a TLS 1.2 server of a connected socket, one that insists on an orderly end."""
    def wrap(connection):
        context = ssl.SSLContext(ssl.PROTOCOL_TLS_SERVER)
        context.maximum_version = ssl.TLSVersion.TLSv1_2
        context.load_cert_chain(folder / "good.pem", folder / "good.key")
        return context.wrap_socket(connection, server_side=True, suppress_ragged_eofs=False)
    return wrap
