#!/usr/bin/python3
"""Holds the includes of the source tree to the layers: prints file:line of each breach, exit code 1 if
there is one. Usage: check_layers.py [root of the source tree]"""

import re
import sys
from pathlib import Path

# What a folder may include besides itself. A folder without a row here is a breach as well.
MAY_INCLUDE = {
    "Platform/Interface": [],
    "Platform/Imaging": ["Platform/Interface"],
    "Platform/Shared": ["Platform/Interface", "Platform/Imaging", "Framework/CXX/Common"],
    "Platform/V4l2": ["Platform/Interface", "Platform/Imaging", "Platform/Shared", "Framework/CXX/Common"],
    "Platform/Simulated": ["Platform/Interface", "Platform/Imaging", "Platform/Shared", "Framework/CXX/Common"],
    "Framework/CXX/Common": [],
    "Framework/CXX/System": ["Framework/CXX/Common"],
    "Framework/CXX/Json": ["Framework/CXX/Common"],
    "Framework/CXX/Network": ["Framework/CXX/Common"],
    "Framework/CXX/Diagnostics": ["Framework/CXX/Common", "Framework/CXX/System"],
    "Services": ["Framework", "Platform/Interface"],
    "Tests": ["Framework", "Platform", "Services"],
}

# The one function that picks a platform.
EXCEPTIONS = {
    "Services/LarkspurWindowsCameraHub/CreateCameraPlatform.cpp": ["Platform/Simulated", "Platform/V4l2"],
}

INCLUDE = re.compile(r'^\s*#\s*include\s*"([^"]+)"')


def is_within(path, folder):
    return path == folder or path.startswith(folder + "/")


def breaches_of_file(root, name):
    """Yields the line number and the reason."""
    folder = next((f for f in MAY_INCLUDE if is_within(name, f)), None)
    if folder is None:
        yield 1, "its folder has no row in MAY_INCLUDE"
        return
    allowed = [folder, *MAY_INCLUDE[folder], *EXCEPTIONS.get(name, [])]
    for number, line in enumerate((root / name).read_text(encoding="utf-8").splitlines(), 1):
        match = INCLUDE.match(line)
        if not match or match[1].endswith(".moc"):
            continue
        if not (root / match[1]).is_file():
            yield number, f'"{match[1]}" is not written from the root of the tree'
        elif not any(is_within(match[1], f) for f in allowed):
            yield number, f'{folder} may not include "{match[1]}"'


def breaches(root):
    """All breaches below root, as text."""
    for top in sorted({folder.split("/")[0] for folder in MAY_INCLUDE}):
        for path in sorted((root / top).rglob("*")):
            if path.suffix in (".h", ".cpp"):
                name = path.relative_to(root).as_posix()
                for number, reason in breaches_of_file(root, name):
                    yield f"{name}:{number}: {reason}"


def main(arguments):
    root = Path(arguments[0]) if arguments else Path(__file__).resolve().parent.parent
    found = list(breaches(root))
    print("\n".join(found), end="\n" if found else "")
    return 1 if found else 0


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))
