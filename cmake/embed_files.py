#!/usr/bin/python3
"""Writes a C++ source that has the contents of files in it, for Services/CameraHubWeb/Page/PageFiles.h.
Usage: embed_files.py OUTPUT FILE..."""

import hashlib
import sys
from pathlib import Path

CONTENT_TYPES = {
    ".html": "text/html; charset=utf-8",
    ".css": "text/css; charset=utf-8",
    ".js": "text/javascript; charset=utf-8",
    ".svg": "image/svg+xml",
    ".webmanifest": "application/manifest+json",
    ".yaml": "application/yaml",
}

HEAD = """#include "Services/CameraHubWeb/Page/PageFiles.h"

#include <array>

namespace CameraHubWeb {
namespace {
"""

NUMBERS_A_LINE = 24


def array(name, content):
    rows = [",".join(map(str, content[at:at + NUMBERS_A_LINE])) for at in range(0, len(content), NUMBERS_A_LINE)]
    return f"constexpr std::uint8_t {name}[] = {{\n" + ",\n".join(rows) + "};\n"


def source(files):
    parts, rows = [HEAD], []
    for number, file in enumerate(sorted(files, key=lambda file: file.name.encode())):
        content = file.read_bytes()
        etag = hashlib.sha256(content).hexdigest()[:32]
        parts.append(array(f"content{number}", content))
        fields = f'"{file.name}", "{CONTENT_TYPES[file.suffix]}", "\\"{etag}\\"", content{number}'
        rows.append(f"    PageFile{{{fields}}},\n")
    parts.append(f"constexpr std::array<PageFile, {len(rows)}> files{{\n" + "".join(rows) + "};\n\n} // namespace\n\n")
    parts.append("std::span<const PageFile> pageFiles() {\n    return files;\n}\n\n} // namespace CameraHubWeb\n")
    return "\n".join(parts)


def main(arguments):
    if len(arguments) < 2:
        print(__doc__, file=sys.stderr)
        return 2
    Path(arguments[0]).write_text(source([Path(name) for name in arguments[1:]]), encoding="ascii")
    return 0


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))
