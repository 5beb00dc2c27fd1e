"""A network of its own for each hub, since the hub's ports are fixed."""

import ctypes
import fcntl
import os
import socket
import struct
from concurrent.futures import ThreadPoolExecutor

from harness.wait import PATIENCE

CLONE_NEWUSER, CLONE_NEWNET = 0x10000000, 0x40000000
SIOCGIFFLAGS, SIOCSIFFLAGS, IFF_UP = 0x8913, 0x8914, 0x1

_libc = ctypes.CDLL(None, use_errno=True)


def _unshare(flags):
    if _libc.unshare(flags) != 0:
        error = ctypes.get_errno()
        raise OSError(error, f"unshare: {os.strerror(error)}")


def allow_networks():
    """Gives this process the right to make networks: an ordinary user becomes root of a user namespace of
    its own. To be called before the process has a second thread."""
    user, group = os.geteuid(), os.getegid()
    try:
        _unshare(CLONE_NEWNET)
    except PermissionError:
        _unshare(CLONE_NEWUSER | CLONE_NEWNET)
        for name, text in (("setgroups", "deny"), ("uid_map", f"0 {user} 1"), ("gid_map", f"0 {group} 1")):
            with open(f"/proc/self/{name}", "w", encoding="ascii") as file:
                file.write(text)


def _enter_new_network():
    """A network belongs to a thread; a socket keeps the network of the thread that made it."""
    _unshare(CLONE_NEWNET)
    with socket.socket() as any_socket:
        name = b"lo".ljust(16, b"\0")
        (flags,) = struct.unpack("16xh", fcntl.ioctl(any_socket, SIOCGIFFLAGS, name + bytes(2))[:18])
        fcntl.ioctl(any_socket, SIOCSIFFLAGS, struct.pack("16sh14x", name, flags | IFF_UP))


class Network:
    """Has nothing but a loopback interface. What runs through it sees that network and no other."""

    def __init__(self):
        self._thread = ThreadPoolExecutor(max_workers=1)
        self.run(_enter_new_network)

    def run(self, function, *arguments, **keywords):
        return self._thread.submit(function, *arguments, **keywords).result()

    def connect(self, port, timeout=PATIENCE):
        return self.run(socket.create_connection, ("127.0.0.1", port), timeout)

    def close(self):
        self._thread.shutdown()
