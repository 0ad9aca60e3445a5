#!/usr/bin/env python3
"""Checks that includes point downward only.

usage: check_layers.py SOURCE_FOLDER

Each folder may include itself and the folders named for it, directly or through another one.
Prints each include that does not, and exits with 1 if there is any.
"""
import pathlib
import re
import sys

# Folder: the folders that it stands on. A file belongs to the longest folder that holds it.
LAYERS = {
    "kvl": [],
    "kvl/amfmessage": ["kvl"],
    "kvl/minidom": ["kvl"],
    "kvl/config": ["kvl"],
    "kzs/base": ["kvl"],
    "kzm": ["kzm/impl", "kzs/base"],
    "kzm/impl": ["kzm", "kzs/base"],
    "qlix_flv": [],
    "qlix_hlx": [],
    "flv": ["qlix_flv"],
    "hlx": ["qlix_hlx"],
    "kzspkgutil/model": ["kzs/base"],
    "kzs": ["kzspkgutil/model", "hlx", "kvl/amfmessage", "kvl/minidom"],
    "kzspkgutil": ["kzs", "kzm", "flv", "hlx"],
    "offline": ["kzspkgutil", "kvl/config"],
}
# Libraries of others that only some folders may name.
LIBRARIES = {
    "expat": {"kvl/minidom", "kvl/config"},
    "openssl": {"qlix_hlx"},
}
INCLUDE = re.compile(r'^\s*#\s*include\s*([<"])([^>"]+)[>"]')


def folder_of(path):
    """The longest layer that holds `path`, or None."""
    parts = path.split("/")[:-1]
    while parts:
        name = "/".join(parts)
        if name in LAYERS:
            return name
        parts.pop()
    return None


def below(folder):
    """All layers that `folder` may include."""
    seen, todo = set(), [folder]
    while todo:
        name = todo.pop()
        if name not in seen:
            seen.add(name)
            todo += LAYERS[name]
    return seen


def findings(source, path):
    own = folder_of(path)
    if own is None:
        yield f"{path}: in no folder that the layers know"
        return
    allowed = below(own)
    for number, line in enumerate((source / path).read_text(encoding="utf-8").splitlines(), 1):
        match = INCLUDE.match(line)
        if not match:
            continue
        kind, name = match.groups()
        if kind == "<":
            library = re.split(r"[/.]", name)[0]
            if own not in LIBRARIES.get(library, {own}):
                yield f"{path}:{number}: {own} must not use {library}"
            continue
        target = folder_of(name)
        if target is None:
            yield f"{path}:{number}: \"{name}\" is not a path from the source folder"
        elif target not in allowed:
            yield f"{path}:{number}: {own} must not include {target}"
        elif target == "kzm/impl" and own not in ("kzm", "kzm/impl"):
            yield f"{path}:{number}: {own} must not include the inside of kzm"


def main():
    source = pathlib.Path(sys.argv[1])
    bad = 0
    for file in sorted(source.rglob("*")):
        if file.suffix in (".h", ".cpp", ".c"):
            for text in findings(source, file.relative_to(source).as_posix()):
                print(text)
                bad += 1
    if bad:
        print(f"{bad} includes point the wrong way")
    sys.exit(1 if bad else 0)


if __name__ == "__main__":
    main()
