"""camera-hub find, with an Avahi daemon and a message bus of its own"""

import fcntl
import json
import os
import socket
import struct
import subprocess

import pytest
from harness.command import fails_with, run
from harness.network import SIOCGIFFLAGS, SIOCSIFFLAGS
from harness.wait import PATIENCE, wait_until

IFF_MULTICAST = 0x1000

BUS = """<!DOCTYPE busconfig PUBLIC "-//freedesktop//DTD D-Bus Bus Configuration 1.0//EN"
 "http://www.freedesktop.org/standards/dbus/1.0/busconfig.dtd">
<busconfig><type>system</type><listen>unix:path={path}</listen><auth>EXTERNAL</auth>
<policy context="default"><allow user="*"/><allow own="*"/><allow send_destination="*"/><allow receive_sender="*"/>
</policy></busconfig>"""

DAEMON = """[server]
host-name=lab
allow-interfaces=lo
use-ipv6=no
disallow-other-stacks=no
[publish]
publish-workstation=no
publish-hinfo=no
"""

SERVICE = """<?xml version="1.0" standalone="no"?><!DOCTYPE service-group SYSTEM "avahi-service.dtd">
<service-group><name>{name}</name><service><type>{type}</type><port>{port}</port></service></service-group>"""


def let_multicast_through():
    """Only then the daemon announces anything on the one interface there is."""
    with socket.socket() as any_socket:
        name = b"lo".ljust(16, b"\0")
        (flags,) = struct.unpack("16xh", fcntl.ioctl(any_socket, SIOCGIFFLAGS, name + bytes(2))[:18])
        fcntl.ioctl(any_socket, SIOCSIFFLAGS, struct.pack("16sh14x", name, flags | IFF_MULTICAST))


class Daemons:
    """A message bus and an Avahi daemon that announces the services given: name, type, port."""

    def __init__(self, network, folder, services):
        self.bus = folder / "bus"
        self._suppressions = folder / "suppressions"
        self._suppressions.write_text("deadlock:libdbus-1.so\n")
        (folder / "bus.conf").write_text(BUS.format(path=self.bus))
        (folder / "avahi.conf").write_text(DAEMON)
        (folder / "services").mkdir()
        for number, (name, kind, port) in enumerate(services):
            (folder / f"services/{number}.service").write_text(SERVICE.format(name=name, type=kind, port=port))
        self._log = open(folder / "log", "wb")
        network.run(let_multicast_through)
        bus = ["dbus-daemon", f"--config-file={folder}/bus.conf", "--nofork", "--nopidfile"]
        self._processes = [self._start(network, bus)]
        wait_until(self.bus.exists, "the message bus")
        # Its folder of services and its place for the process's number cannot be set.
        avahi = (f"mount --bind {folder}/services /etc/avahi/services && mount -t tmpfs none /run && "
                 f"exec avahi-daemon --no-drop-root --no-chroot --no-rlimits -f {folder}/avahi.conf")
        self._processes.append(self._start(network, ["unshare", "--mount", "sh", "-c", avahi]))
        log = folder / "log"
        wait_until(lambda: log.read_text().count("successfully established") == len(services), "the announcements")

    def _start(self, network, command):
        return network.run(subprocess.Popen, ["setpriv", "--pdeathsig", "KILL", *command], stdin=subprocess.DEVNULL,
                           stdout=self._log, stderr=self._log, env=os.environ | self.environment)

    @property
    def environment(self):
        # The bus's library takes its locks in changing orders, on one thread alone: no deadlock of ours.
        options = f"{os.environ.get('TSAN_OPTIONS', '')}:suppressions={self._suppressions}"
        return {"DBUS_SYSTEM_BUS_ADDRESS": f"unix:path={self.bus}", "TSAN_OPTIONS": options}

    def stop(self):
        for process in reversed(self._processes):
            process.terminate()
            process.wait(PATIENCE)
        self._log.close()


@pytest.fixture
def start_daemons(network, tmp_path):
    started = []

    def start(*services):
        started.append(Daemons(network, tmp_path, services))
        return started[-1]

    yield start
    for daemons in started:
        daemons.stop()


def test_hubs_that_announce_themselves_are_found_and_nothing_else(network, start_daemons, start_command):
    daemons = start_daemons(("Hub in the lab", "_camera-hub._tcp", 3141), ("Printer", "_ipp._tcp", 631))
    assert json.loads(run(network, "find", "--json", **daemons.environment).stdout) == [
        {"name": "Hub in the lab", "host": "lab.local", "port": 3141, "addresses": ["127.0.0.1"]}]
    result = run(network, "find", **daemons.environment)
    assert (result.returncode, result.stderr) == (0, "")
    assert [line.split() for line in result.stdout.splitlines()] == [
        ["Name", "Host", "Port", "Addresses"], ["Hub", "in", "the", "lab", "lab.local", "3141", "127.0.0.1"]]
    at_terminal = start_command(network, "find", "-q", columns=40, **daemons.environment).rest()
    assert max(map(len, at_terminal.splitlines())) == 40


def test_several_hubs_stand_in_the_order_of_their_names(network, start_daemons):
    daemons = start_daemons(("B", "_camera-hub._tcp", 3142), ("A", "_camera-hub._tcp", 3141))
    hubs = json.loads(run(network, "find", "--json", **daemons.environment).stdout)
    assert [(hub["name"], hub["port"]) for hub in hubs] == [("A", 3141), ("B", 3142)]


def test_a_network_without_hubs_is_told(network, start_daemons):
    daemons = start_daemons(("Printer", "_ipp._tcp", 631))
    fails_with(9, "no hub announces itself on this network; give its machine by --host",
               run(network, "find", **daemons.environment))
    assert json.loads(run(network, "find", "--json", **daemons.environment).stdout) == []


def test_a_machine_without_a_daemon_is_told(network, tmp_path):
    result = run(network, "find", DBUS_SYSTEM_BUS_ADDRESS=f"unix:path={tmp_path}/none")
    assert (result.returncode, result.stdout) == (9, "")
    assert result.stderr.startswith("camera-hub: cannot look for hubs: ")
    assert result.stderr.endswith("; start avahi-daemon on this machine, or name the hub's by --host\n")
