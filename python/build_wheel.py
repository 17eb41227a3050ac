"""Writes a wheel that holds the package with the library, the plug-ins and the program: build_wheel.py PREFIX FOLDER

PREFIX is an installation. The wheel needs no other package, and serves every Python from 3.9 on.
"""

import base64
import hashlib
import os
import pathlib
import subprocess
import sys
import sysconfig
import zipfile


def contents(prefix: pathlib.Path) -> "dict[str, pathlib.Path]":
    package = pathlib.Path(__file__).parent / "harbor6"
    native = [*prefix.glob("lib/libharbor6.so.?"), *prefix.glob("lib/harbor6/formats/*.so"), prefix / "bin/harbor"]
    files = {f"harbor6/{each.name}": each for each in package.iterdir() if each.suffix in (".py", ".typed")}
    files.update({f"harbor6/native/{each.relative_to(prefix)}": each for each in native})
    return dict(sorted(files.items()))


def main(prefix: pathlib.Path, folder: pathlib.Path) -> None:
    program = subprocess.run([prefix / "bin" / "harbor", "--version"], check=True, capture_output=True, text=True)
    version = program.stdout.split()[-1]
    tag = "py3-none-" + sysconfig.get_platform().replace("-", "_").replace(".", "_")
    summary = "Opens Microsoft Cabinet files and compound documents"
    about = f"harbor6-{version}.dist-info/"
    head = f"Metadata-Version: 2.1\nName: harbor6\nVersion: {version}\nSummary: {summary}\nRequires-Python: >=3.9\n"
    wheel = f"Wheel-Version: 1.0\nGenerator: build_wheel\nRoot-Is-Purelib: false\nTag: {tag}\n"
    files = [(name, path.read_bytes(), os.access(path, os.X_OK)) for name, path in contents(prefix).items()]
    files += [(about + "METADATA", head.encode(), False), (about + "WHEEL", wheel.encode(), False)]
    record = ""
    for name, data, _ in files:
        digest = base64.urlsafe_b64encode(hashlib.sha256(data).digest()).rstrip(b"=").decode()
        record += f"{name},sha256={digest},{len(data)}\n"
    files.append((about + "RECORD", f"{record}{about}RECORD,,\n".encode(), False))
    folder.mkdir(parents=True, exist_ok=True)
    with zipfile.ZipFile(folder / f"harbor6-{version}-{tag}.whl", "w", zipfile.ZIP_DEFLATED) as archive:
        for name, data, executable in files:
            info = zipfile.ZipInfo(name)  # of 1980, so that the same files give the same wheel
            info.compress_type = zipfile.ZIP_DEFLATED
            info.external_attr = (0o100755 if executable else 0o100644) << 16
            archive.writestr(info, data)
        print(archive.filename)


if __name__ == "__main__":
    main(pathlib.Path(sys.argv[1]), pathlib.Path(sys.argv[2]))
