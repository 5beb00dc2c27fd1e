"""A machine beside this one: a network of its own behind a cable."""

import subprocess

from guest import modules

ADDRESS, HERE = "192.168.7.2", "192.168.7.1"
ON_IT = ["ip", "netns", "exec", "neighbour"]
CONNECT = "import socket, sys; socket.create_connection((sys.argv[1], int(sys.argv[2])), 3)"


def run(*command):
    subprocess.run(command, check=True)


def plug():
    modules.load("veth")
    run("ip", "netns", "add", "neighbour")
    run("ip", "link", "add", "cable", "type", "veth", "peer", "name", "far-end", "netns", "neighbour")
    for command, address, end in ([], HERE, "cable"), (ON_IT, ADDRESS, "far-end"):
        run(*command, "ip", "address", "add", f"{address}/24", "dev", end)
        run(*command, "ip", "link", "set", end, "up")


def unplug():
    run("ip", "netns", "delete", "neighbour")


def reaches(port):
    """Whether it gets a connection to this machine."""
    command = [*ON_IT, "python3", "-c", CONNECT, HERE, str(port)]
    return subprocess.run(command, capture_output=True, check=False).returncode == 0
