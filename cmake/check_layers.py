#!/usr/bin/python3
"""Holds the includes of the source tree to the layers, and units (a header with its source) to an order: prints
file:line of each breach and each circle, exit code 1 if there is one.
Usage: check_layers.py [root of the source tree]"""

import re
import sys
from pathlib import Path

COMMON = "Framework/CXX/Common"
INTERFACE = "Platform/Interface"
PLATFORM = [INTERFACE, "Platform/Imaging", "Platform/Shared", COMMON]

# What a folder may include besides itself: rows above a folder are its wings, which do not see it. A folder without a
# row here is a breach as well.
MAY_INCLUDE = {
    INTERFACE: [],
    "Platform/Imaging/Png": [],
    "Platform/Imaging": [INTERFACE],
    "Platform/Shared": [INTERFACE, "Platform/Imaging", COMMON],
    "Platform/V4l2/Kernel": PLATFORM,
    "Platform/V4l2/Discovery": [*PLATFORM, "Platform/V4l2/Kernel"],
    "Platform/V4l2/Controls": [*PLATFORM, "Platform/V4l2/Kernel"],
    "Platform/V4l2/Streaming": [*PLATFORM, "Platform/V4l2/Kernel", "Platform/V4l2/Discovery"],
    "Platform/V4l2/Session": [
        *PLATFORM,
        "Platform/V4l2/Kernel",
        "Platform/V4l2/Discovery",
        "Platform/V4l2/Controls",
        "Platform/V4l2/Streaming",
    ],
    "Platform/V4l2": PLATFORM,
    "Platform/Simulated/Scenario": PLATFORM,
    "Platform/Simulated/Picture": [*PLATFORM, "Platform/Simulated/Scenario"],
    "Platform/Simulated/World": [*PLATFORM, "Platform/Simulated/Scenario", "Platform/Simulated/Picture"],
    "Platform/Simulated/Session": [*PLATFORM, "Platform/Simulated/Scenario", "Platform/Simulated/World"],
    "Platform/Simulated": PLATFORM,
    COMMON: [],
    "Framework/CXX/System": [COMMON],
    "Framework/CXX/Json": [COMMON],
    "Framework/CXX/Network": [COMMON],
    "Framework/CXX/Diagnostics": [COMMON, "Framework/CXX/System"],
    "Services/CameraAccess": [COMMON, INTERFACE],
    "Services/LarkspurWindowsCameraHubNonUWP": ["Framework", INTERFACE],
    "Services/CameraTestDriver": [COMMON, "Framework/CXX/System", INTERFACE, "Services/CameraAccess"],
    "Services/LarkspurWindowsCameraHub": [
        "Framework",
        INTERFACE,
        "Services/CameraAccess",
        "Services/LarkspurWindowsCameraHubNonUWP",
    ],
    # Programs of others are built with it: it stands alone.
    "Client": [],
    # The command line is one of those programs.
    "Tools/Text": ["Client/CameraHubClient"],
    "Tools/CameraHub/Picture": ["Tools/Text"],
    "Tools/CameraHub/Terminal": ["Client/CameraHubClient", "Tools/CameraHub/Picture", "Tools/Text"],
    "Tools/CameraHub": ["Client/CameraHubClient", "Tools/Text"],
    # The program that speaks HTTP to people is another.
    "Services/CameraHubWeb/Http": [],
    "Services/CameraHubWeb/Stills": ["Platform/Imaging", INTERFACE],
    "Services/CameraHubWeb/Hub": ["Client/CameraHubClient"],
    "Services/CameraHubWeb/Api": [
        "Client/CameraHubClient",
        "Services/CameraHubWeb/Http",
        "Services/CameraHubWeb/Hub",
        "Services/CameraHubWeb/Stills",
        "Tools/Text",
    ],
    "Services/CameraHubWeb/Page": [],
    "Services/CameraHubWeb": ["Client/CameraHubClient", COMMON, "Framework/CXX/System", "Tools/Text"],
    "Tests": ["Client", "Framework", "Platform", "Services", "Tools"],
    "Benchmarks": ["Framework/CXX/System", "Platform", "Tests/Platform/Imaging"],
}

# What single files may include besides.
EXCEPTIONS = {
    # The one function that picks a platform.
    "Services/LarkspurWindowsCameraHub/CreateCameraPlatform.cpp": ["Platform/Simulated", "Platform/V4l2"],
    # Starts the console when it is asked for.
    "Services/LarkspurWindowsCameraHub/main.cpp": ["Services/CameraTestDriver"],
}

# Inherent in request and response: the connection makes them, they write to the connection, the server answers both.
CIRCLES_ALLOWED = [
    {f"Framework/CXX/Network/Http{name}" for name in ("Client", "Request", "Response", "Route", "Server")},
]

# The client library's public headers are included as they are once installed, by itself as well.
INCLUDE = re.compile(r'^\s*#\s*include\s*(?:"([^"]+)"|<(CameraHubClient/[^>]+)>)')


def is_within(path, folder):
    return path == folder or path.startswith(folder + "/")


def sources(root):
    """The names of all headers and sources, from the root."""
    for top in sorted({folder.split("/")[0] for folder in MAY_INCLUDE}):
        for path in sorted((root / top).rglob("*")):
            if path.suffix in (".h", ".cpp"):
                yield path.relative_to(root).as_posix()


def includes(root, name):
    """Yields the line number and the file that it includes, ours and not generated."""
    for number, line in enumerate((root / name).read_text(encoding="utf-8").splitlines(), 1):
        match = INCLUDE.match(line)
        included = match and (match[1] or f"Client/{match[2]}")
        if included and not included.endswith(".moc"):
            yield number, included


def breaches_of_file(root, name):
    """Yields the line number and the reason."""
    folder = next((f for f in MAY_INCLUDE if is_within(name, f)), None)
    if folder is None:
        yield 1, "its folder has no row in MAY_INCLUDE"
        return
    allowed = [folder, *MAY_INCLUDE[folder], *EXCEPTIONS.get(name, [])]
    for number, included in includes(root, name):
        if not (root / included).is_file():
            yield number, f'"{included}" is not written from the root of the tree'
        elif not any(is_within(included, f) for f in allowed):
            yield number, f'{folder} may not include "{included}"'


def unit_of(name):
    return name.rsplit(".", 1)[0]


def includes_of_units(root, names):
    """The units that each unit includes."""
    graph = {unit_of(name): set() for name in names}
    for name in names:
        unit = unit_of(name)
        graph[unit] |= {unit_of(included) for _, included in includes(root, name)} & (graph.keys() - {unit})
    return graph


def circles(graph):
    """Yields the sets of units that reach one another."""
    reach = {unit: reachable(graph, unit) for unit in graph}
    seen = set()
    for unit in sorted(graph):
        circle = {other for other in reach[unit] if unit in reach[other]}
        if circle and unit not in seen:
            seen |= circle
            yield circle


def reachable(graph, start):
    """The units that a unit includes, directly or through others; itself only on a circle."""
    found, waiting = set(), list(graph[start])
    while waiting:
        unit = waiting.pop()
        if unit not in found:
            found.add(unit)
            waiting.extend(graph[unit])
    return found


def breaches(root):
    """All breaches below root, as text."""
    names = list(sources(root))
    for name in names:
        for number, reason in breaches_of_file(root, name):
            yield f"{name}:{number}: {reason}"
    for circle in circles(includes_of_units(root, names)):
        if not any(circle <= allowed for allowed in CIRCLES_ALLOWED):
            yield f"{min(circle)}.h:1: a circle of includes: {', '.join(sorted(circle))}"


def main(arguments):
    root = Path(arguments[0]) if arguments else Path(__file__).resolve().parent.parent
    found = list(breaches(root))
    print("\n".join(found), end="\n" if found else "")
    return 1 if found else 0


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))
