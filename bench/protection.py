"""The inputs of a protected run, made with the openssl command."""
import subprocess

SUBJECT = {"transport": "keyEncipherment", "server": "keyEncipherment", "packager": "digitalSignature"}


def openssl(*words):
    subprocess.run(["openssl", *map(str, words)], check=True, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)


def protection_options(folder):
    """Makes keys, certificates, credential and policy in `folder`; answers the options that name them."""
    folder.mkdir(parents=True, exist_ok=True)
    for name, usage in SUBJECT.items():
        openssl("req", "-x509", "-newkey", "rsa:2048", "-noenc", "-days", 365, "-subj", f"/CN={name}",
                "-addext", f"keyUsage={usage}", "-keyout", folder / f"{name}.key", "-out", folder / f"{name}.pem")
        openssl("x509", "-in", folder / f"{name}.pem", "-outform", "DER", "-out", folder / f"{name}.der")
    openssl("pkcs12", "-export", "-inkey", folder / "packager.key", "-in", folder / "packager.pem",
            "-passout", "pass:bench", "-out", folder / "packager.pfx")
    openssl("rand", "-out", folder / "common.key", 32)
    (folder / "policy.xml").write_text("<policy/>\n")
    return (
        "--content-id=bench",
        f"--common-key={folder / 'common.key'}",
        "--license-server-url=https://license.example/",
        f"--transport-cert={folder / 'transport.der'}",
        f"--license-server-cert={folder / 'server.der'}",
        f"--packager-credential={folder / 'packager.pfx'}",
        "--credential-pwd=bench",
        f"--policy-file={folder / 'policy.xml'}",
    )
