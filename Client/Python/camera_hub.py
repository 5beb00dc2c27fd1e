"""A client of the Camera Hub: lists the cameras, takes stills, fetches them as PNG files.

One module that needs nothing but Python 3.9; with numpy, stills are arrays too.

    >>> from camera_hub import Hub
    >>> with Hub("localhost") as hub:
    ...     camera = hub.discover()[0]
    ...     still = hub.take_still(camera, exposure=1/50)
    >>> print(camera.uid, camera.width, camera.height)
    desk 1280 720
    >>> still.exposure
    datetime.timedelta(microseconds=15625)
    >>> still.save("picture.png")

Every call has a deadline, and every failure is an exception of its own below HubError. An argument that no hub could
take is a TypeError or ValueError, raised before anything is sent: by design several malformed requests end or hang the
hub for everybody, and none of them can be sent with this module.
"""

from __future__ import annotations

import collections.abc
import contextlib
import errno
import itertools
import json
import math
import os
import re
import selectors
import socket
import struct
import threading
import time
import uuid
import zlib
from dataclasses import dataclass, field
from datetime import timedelta
from pathlib import Path
from types import TracebackType
from typing import TYPE_CHECKING, Any, Optional, TypeVar, Union

if TYPE_CHECKING:
    import numpy
    import numpy.typing

__all__ = [
    "Camera", "Cancelled", "Capture", "CaptureRefused", "ConnectionEnded", "ConnectionFailed", "Duration", "Exposure",
    "Hub", "HubError", "ImageGone", "MessageRejected", "MethodFailed", "NotConnected", "Percent", "ProtocolError",
    "Still", "TimedOut",
]

__version__ = "2.9"

Duration = Union[timedelta, float]
"""A length of time: a timedelta, or a number of seconds."""

_INT32_MAX = 2**31 - 1
# Seconds. The last stands for all that is longer, as an int may be too large for a float: no check lets it pass.
_LONGEST_SETTLE, _LONGEST_TIMEOUT, _FAR_AWAY = 60, 24 * 60 * 60, 1e12
_EXPOSURE_UNKNOWN = -(2**63)  # what the hub says where it could not be set or read back
_IMAGE_ID = re.compile(r"[0-9A-Fa-f]{8}(-[0-9A-Fa-f]{4}){3}-[0-9A-Fa-f]{12}")
_SIGNATURE = b"\x89PNG\r\n\x1a\n"

# Bytes and pixels, far beyond what a hub sends: they keep what is no hub from filling the memory.
_LARGEST_REPLY, _LARGEST_HEAD, _LARGEST_IMAGE, _MOST_PIXELS = 1 << 26, 1 << 16, 1 << 30, 200_000_000

_Parsed = TypeVar("_Parsed")


class HubError(Exception):
    """What all failures of this module have in common."""


class ConnectionFailed(HubError):
    """The hub cannot be reached: no such host, nobody listens there, no way."""


class ConnectionEnded(HubError):
    """The hub ended without a reply: it died, was stopped, or its host has gone. What was asked for may have been done.
    Make a new Hub object once the hub runs again."""


class NotConnected(HubError):
    """An earlier call has lost the connection, and nothing was sent. Make a new Hub object: the camera that the old
    one held open, and its redirection, have gone with the connection."""


class TimedOut(HubError):
    """The deadline passed; the hub may still be at work on it."""


class Cancelled(HubError):
    """close() was called, before the call or meanwhile."""


class MessageRejected(HubError):
    """The hub could not read the message; `code` is the number it gave, -32700. From a hub that works this is a fault
    of this module."""

    def __init__(self, code: int, message: str) -> None:
        super().__init__(f"{message} ({code})")
        self.code, self.message = code, message


class MethodFailed(HubError):
    """The camera failed during the capture, or the diagnostics could not be redirected. The text is the hub's."""


class CaptureRefused(HubError):
    """There was nothing to capture from: `code` 1 no camera was named, 2 no camera has this uid, 3 no image came."""

    def __init__(self, code: int, message: str) -> None:
        super().__init__(f"{message} (code {code})")
        self.code, self.message = code, message


class ImageGone(HubError):
    """The hub has no image of this id: another capture has replaced it, or the camera delivered nothing for it."""


class ProtocolError(HubError):
    """What came is not what a hub sends. Is something else listening there?"""


@dataclass(frozen=True)
class Camera:
    """A camera as the hub lists it. `make` and `model` may be empty; sizes are in pixels. A camera whose exposure
    cannot be changed has the same in both exposures."""

    uid: str
    make: str
    model: str
    width: int
    height: int
    shortest_exposure: timedelta
    longest_exposure: timedelta


@dataclass(frozen=True)
class Percent:
    """An exposure as a share of the camera's range, in stops: 100 is the longest, 50 one stop below, 25 two; 0 is the
    shortest.

        >>> Percent(101)
        Traceback (most recent call last):
        ValueError: an exposure of 101 per cent: 0 to 100 there are
    """

    value: int

    def __post_init__(self) -> None:
        if not _is_int(self.value):
            raise TypeError(f"per cent are a whole number, not {self.value!r}")
        if not 0 <= self.value <= 100:
            raise ValueError(f"an exposure of {self.value} per cent: 0 to 100 there are")


Exposure = Union[timedelta, float, Percent]
"""An exposure to ask for: a timedelta, a number of seconds, or Percent. The camera takes the nearest that it has."""


@dataclass(frozen=True)
class Capture:
    """What the hub says of a still: the exposure in force, None where it could not be set or read back, and the id
    under which the image can be fetched."""

    exposure: Optional[timedelta]
    image_id: str


@dataclass(frozen=True)
class Still(Capture):
    """A still with its image. `png` is the PNG file, 8 bits a colour; `was_taken_twice` tells that somebody else's
    capture replaced the first image before it was fetched, so that this is a second one."""

    png: bytes = field(repr=False)
    was_taken_twice: bool = False

    def save(self, path: Union[str, os.PathLike[str]]) -> None:
        """Writes the PNG file, replacing one of that name. It is never seen half written: it is renamed when it is
        whole. Raises OSError."""
        target = Path(path)
        if target.exists() and not target.is_file():
            raise FileExistsError(errno.EEXIST, "is there and no file", str(target))
        unfinished = target.parent / f".{uuid.uuid4()}.png"
        try:
            with open(unfinished, "xb") as file:
                file.write(self.png)
            unfinished.replace(target)
        except BaseException:
            with contextlib.suppress(FileNotFoundError):
                unfinished.unlink()
            raise

    def array(self) -> numpy.typing.NDArray[numpy.uint8]:
        """The pixels, as an array of height x width x 3 (red, green, blue) bytes of its own. Takes about half a second
        for two million pixels. Raises ImportError where numpy is missing, ProtocolError for a file that no hub makes.
        """
        return _pixels(self.png)


class Hub:
    """A connection to the hub on `host`, a name or an address. It is made at once, and ended by close() or at the end
    of the with block.

    The camera of the latest capture stays open, and so quick, for as long as the connection lives. Captures of all
    clients are made one at a time, and all other requests wait meanwhile.

    `call_timeout` is how long a call may take that is not told otherwise, up to a day. The address of a name is looked
    up in the system's own time, which no deadline ends. An object belongs to one thread at a time, except for close().
    A message to which no proper reply came in time ends the connection: make a new object after such an error.

    Raises ConnectionFailed, TimedOut.
    """

    def __init__(self, host: str = "localhost", *, message_port: int = 3141, image_port: int = 3142,
                 connect_timeout: Duration = 10.0, call_timeout: Duration = 60.0) -> None:
        self._host = _checked_host(host)
        self._image_port = _checked_port("image_port", image_port)
        self._call_timeout = _checked_timeout("call_timeout", call_timeout)
        self._identities = itertools.count(1)
        self._stop = _Stop()
        self._in_use = threading.Lock()
        deadline = time.monotonic() + _checked_timeout("connect_timeout", connect_timeout)
        try:
            port = _checked_port("message_port", message_port)
            self._messages = _Connection(self._host, port, self._stop, deadline)
        except BaseException:
            self._stop.release()
            raise

    def __enter__(self) -> Hub:
        return self

    def __exit__(self, kind: Optional[type[BaseException]], value: Optional[BaseException],
                 traceback: Optional[TracebackType]) -> None:
        self.close()

    def close(self) -> None:
        """Ends the connection. May be called in any thread, at any time and more than once: a call that waits ends with
        Cancelled, and later ones do so at once."""
        self._stop.request()
        self._release_if_unused()

    def version(self, *, timeout: Optional[Duration] = None) -> str:
        """The version of the hub."""
        with self._call(timeout) as deadline:
            return _checked_reply(str, self._ask("camera:version", {}, deadline))

    def discover(self, *, timeout: Optional[Duration] = None) -> list[Camera]:
        """The cameras, in the order of their uids. A camera is listed half a second after it was plugged in at the
        earliest, also those that a hub finds at its start."""
        with self._call(timeout) as deadline:
            return [_camera(entry) for entry in _checked_reply(list, self._ask("camera:discover", {}, deadline))]

    def capture(self, camera: Union[Camera, str], exposure: Exposure = timedelta(milliseconds=50), *,
                settle: Duration = 0.0, timeout: Optional[Duration] = None) -> Capture:
        """Takes a still, whose image the hub keeps until the next capture of any client. The first one of a camera
        takes more than two seconds, in which its automatic controls settle.

        `camera` is one of discover(), or a uid. `settle` is how long the hub waits after a change of the exposure, to
        let the camera follow it: at most a minute, during which it serves nobody. `timeout` begins after that time.

        Raises CaptureRefused, MethodFailed if the camera fails, and what every call may raise: ConnectionEnded,
        TimedOut, Cancelled, ProtocolError.
        """
        parameters = _capture_parameters(camera, exposure, settle)
        with self._call(timeout, settle) as deadline:
            return self._capture(parameters, deadline)

    def fetch(self, image: Union[Capture, str], *, timeout: Optional[Duration] = None) -> bytes:
        """The PNG file of a capture or of an image id, over a connection of its own. Raises ImageGone,
        ConnectionFailed, and what every call may raise."""
        image_id = _checked_image_id(image)
        with self._call(timeout) as deadline:
            return self._fetch(image_id, deadline)

    def take_still(self, camera: Union[Camera, str], exposure: Exposure = timedelta(milliseconds=50), *,
                   settle: Duration = 0.0, timeout: Optional[Duration] = None) -> Still:
        """capture() and fetch() in one. If the image is gone before it is fetched, the still is taken once more, which
        `was_taken_twice` tells; if that one is gone too, ImageGone is raised. `timeout` is for all of it."""
        parameters = _capture_parameters(camera, exposure, settle)
        with self._call(timeout, settle, settle) as deadline:
            capture = self._capture(parameters, deadline)
            try:
                return Still(capture.exposure, capture.image_id, self._fetch(capture.image_id, deadline))
            except ImageGone:
                capture = self._capture(parameters, deadline)
                return Still(capture.exposure, capture.image_id, self._fetch(capture.image_id, deadline), True)

    def redirect_diagnostics(self, path: Union[str, os.PathLike[str]], *, timeout: Optional[Duration] = None) -> None:
        """Has the hub write its logs and crash records into a folder of the hub's machine, for as long as this
        connection lives; a later redirection of any client replaces it. The folder has to be prepared, below one whose
        name is or ends in "Diagnostics", or the hub says no: MethodFailed. For a part of a program, use a Hub object of
        its own:

            with Hub() as diagnostics:
                diagnostics.redirect_diagnostics("/var/tmp/Diagnostics/mine")
                ...
        """
        text = _checked_text("a path", os.fspath(path))
        if "Diagnostics" not in text:  # the hub would say no, but overwrite its logging.properties first
            raise ValueError(f'a path without "Diagnostics" in it: {text}')
        with self._call(timeout) as deadline:
            _checked_reply(int, self._ask("camera:redirectDiagnostics", {"path": text}, deadline))

    @contextlib.contextmanager
    def _call(self, timeout: Optional[Duration],
              *more_time: Duration) -> collections.abc.Generator[float, None, None]:
        """One call of a user, with its deadline."""
        seconds = self._call_timeout if timeout is None else _checked_timeout("timeout", timeout)
        seconds += sum(map(_seconds, more_time))
        if not self._in_use.acquire(blocking=False):
            self._stop.check()
            raise RuntimeError("another thread is using this Hub object")
        try:
            self._stop.check()
            yield time.monotonic() + seconds
        finally:
            self._in_use.release()
            if self._stop.is_requested:
                self._release_if_unused()

    def _release_if_unused(self) -> None:
        """Whoever comes last, close() or the call that it ended, closes the sockets."""
        if self._in_use.acquire(blocking=False):
            try:
                self._messages.close()
                self._stop.release()
            finally:
                self._in_use.release()

    def _ask(self, method: str, parameters: dict[str, object], deadline: float) -> object:
        """The result of a method."""
        identity = next(self._identities)
        request = {"jsonrpc": "2.0", "id": identity, "method": method, "params": parameters}
        with self._messages.exchange():
            self._messages.send(json.dumps(request).encode() + b"\0", deadline)
            message = self._messages.receive_through(b"\0", _LARGEST_REPLY, deadline)[:-1]
            return _result_of(_parsed_json(message), identity)

    def _capture(self, parameters: dict[str, object], deadline: float) -> Capture:
        result = _checked_reply(dict, self._ask("camera:capture", parameters, deadline))
        if "code" in result:
            raise CaptureRefused(_member(result, "code", int), _member(result, "message", str))
        image_id = _member(result, "resid", str)
        if not _IMAGE_ID.fullmatch(image_id):
            raise ProtocolError(f"this is no image id: {image_id!r}")
        exposure = _member(result, "exposureInUs", int)
        return Capture(None if exposure == _EXPOSURE_UNKNOWN else _microseconds(exposure), image_id)

    def _fetch(self, image_id: str, deadline: float) -> bytes:
        # A connection for each: behind a 404 the hub sends spare bytes, which the next reply would begin with.
        connection = _Connection(self._host, self._image_port, self._stop, deadline)
        with contextlib.closing(connection):
            host = f"[{self._host}]" if ":" in self._host else self._host
            connection.send(f"GET /res/{image_id} HTTP/1.1\r\nHost: {host}\r\n\r\n".encode("ascii"), deadline)
            head = connection.receive_through(b"\r\n\r\n", _LARGEST_HEAD, deadline)
            image = connection.receive_exactly(_image_size(head), deadline)
        if not image.startswith(_SIGNATURE):
            raise ProtocolError("the image is no PNG file")
        return image


class _Stop:
    """Asks whoever waits to stop: its socket can be read from then on."""

    def __init__(self) -> None:
        self.is_requested = False
        self._sender, self.receiver = socket.socketpair()

    def request(self) -> None:
        self.is_requested = True
        with contextlib.suppress(OSError):  # released already
            self._sender.send(b"!")

    def check(self) -> None:
        if self.is_requested:
            raise Cancelled("the connection was closed with close()")

    def release(self) -> None:
        self._sender.close()
        self.receiver.close()


class _Connection:
    """A TCP connection that waits no longer than to a deadline (of time.monotonic()) or a stop."""

    def __init__(self, host: str, port: int, stop: _Stop, deadline: float) -> None:
        self._stop = stop
        self._received = bytearray()
        self._is_open = True
        try:
            addresses = socket.getaddrinfo(host, port, type=socket.SOCK_STREAM)
        except OSError as error:
            raise ConnectionFailed(f"no address of {host}: {error.strerror}") from error
        for number, (family, kind, protocol, _, address) in enumerate(addresses, 1):
            self._socket = socket.socket(family, kind, protocol)
            try:
                self._connect(address, deadline)
                return
            except OSError as error:
                self._socket.close()
                if number == len(addresses):
                    raise ConnectionFailed(f"no connection to {host} port {port}: {error.strerror}") from error
            except BaseException:
                self._socket.close()
                raise

    def _connect(self, address: Any, deadline: float) -> None:
        self._socket.setblocking(False)
        code = self._socket.connect_ex(address)
        if code in (errno.EINPROGRESS, errno.EWOULDBLOCK):
            self._wait(selectors.EVENT_WRITE, deadline)
            code = self._socket.getsockopt(socket.SOL_SOCKET, socket.SO_ERROR)
        if code != 0:
            raise OSError(code, os.strerror(code))
        self._socket.setsockopt(socket.IPPROTO_TCP, socket.TCP_NODELAY, 1)

    def close(self) -> None:
        self._is_open = False
        self._socket.close()

    @contextlib.contextmanager
    def exchange(self) -> collections.abc.Generator[None, None, None]:
        """A message and its reply. If that does not come as it should the connection ends: a late reply would be taken
        for that to the next message."""
        if not self._is_open:
            raise NotConnected("an earlier call has lost the connection")
        try:
            yield
        except (MessageRejected, MethodFailed):
            raise
        except BaseException:
            self.close()
            raise

    def send(self, data: bytes, deadline: float) -> None:
        rest = memoryview(data)
        while rest:
            try:
                rest = rest[self._socket.send(rest):]
            except BlockingIOError:
                self._wait(selectors.EVENT_WRITE, deadline)
            except OSError as error:
                raise ConnectionEnded(f"the hub ended without a reply: {error.strerror}") from error

    def receive_through(self, mark: bytes, limit: int, deadline: float) -> bytes:
        """All up to the mark, which is among it."""
        searched = 0
        while (found := self._received.find(mark, searched)) < 0:
            searched = max(0, len(self._received) - len(mark) + 1)
            if len(self._received) > limit:
                raise ProtocolError(f"a reply without an end in {limit} bytes")
            self._receive_more(deadline)
        return self.receive_exactly(found + len(mark), deadline)

    def receive_exactly(self, count: int, deadline: float) -> bytes:
        while len(self._received) < count:
            self._receive_more(deadline)
        data = bytes(memoryview(self._received)[:count])
        del self._received[:count]
        return data

    def _receive_more(self, deadline: float) -> None:
        while True:
            self._check(deadline)
            try:
                data = self._socket.recv(1 << 18)
            except BlockingIOError:
                self._wait(selectors.EVENT_READ, deadline)
                continue
            except OSError as error:
                raise ConnectionEnded(f"the hub ended without a reply: {error.strerror}") from error
            if not data:
                raise ConnectionEnded("the hub ended without a reply, or in the midst of one")
            self._received += data
            return

    def _check(self, deadline: float) -> None:
        self._stop.check()
        if time.monotonic() >= deadline:
            raise TimedOut("the hub did not answer in time")

    def _wait(self, event: int, deadline: float) -> None:
        with selectors.DefaultSelector() as selector:
            selector.register(self._socket, event)
            selector.register(self._stop.receiver, selectors.EVENT_READ)
            selector.select(max(0.0, deadline - time.monotonic()))
        self._check(deadline)


def _is_int(value: object) -> bool:
    return isinstance(value, int) and not isinstance(value, bool)


def _seconds(value: Duration, what: str = "a time") -> float:
    if isinstance(value, timedelta):
        return value.total_seconds()
    if isinstance(value, bool) or not isinstance(value, (int, float)):
        raise TypeError(f"{what} is a timedelta or a number of seconds, not {value!r}")
    seconds = float(min(max(value, -_FAR_AWAY), _FAR_AWAY))
    if math.isnan(seconds):
        raise ValueError(f"{what} is a number of seconds, not nan")
    return seconds


def _checked_timeout(name: str, value: Duration) -> float:
    seconds = _seconds(value, name)
    if not 0 < seconds <= _LONGEST_TIMEOUT:
        raise ValueError(f"{name} is more than 0 s and at most a day, not {seconds:g} s")
    return seconds


def _checked_port(name: str, value: int) -> int:
    if not _is_int(value):
        raise TypeError(f"{name} is a whole number, not {value!r}")
    if not 1 <= value <= 65535:
        raise ValueError(f"{name} is 1 to 65535, not {value}")
    return value


def _checked_text(what: str, value: object) -> str:
    if not isinstance(value, str):
        raise TypeError(f"{what} is a str, not {value!r}")
    value.encode()  # UnicodeEncodeError, which is a ValueError, for half of a surrogate pair
    if "\0" in value:
        raise ValueError(f"{what} has no NUL in it: {value!r}")
    return value


def _checked_host(value: object) -> str:
    text = _checked_text("a host", value)
    if not re.fullmatch(r"[!-~]+", text):
        raise ValueError(f"a host name or address is made of ASCII signs without blanks, not {text!r}")
    return text


def _checked_image_id(image: object) -> str:
    text = _checked_text("an image id", image.image_id if isinstance(image, Capture) else image)
    if not _IMAGE_ID.fullmatch(text):
        raise ValueError(f"this is no image id: {text!r}")
    return text


def _capture_parameters(camera: object, exposure: Exposure, settle: Duration) -> dict[str, object]:
    """The parameters of camera:capture: whole numbers of 32 bits and a text, as others end or hang the hub."""
    uid = _checked_text("a camera", camera.uid if isinstance(camera, Camera) else camera)
    if not uid:
        raise ValueError("a uid is not empty")
    seconds = _seconds(settle, "settle")
    if not 0 <= seconds <= _LONGEST_SETTLE:
        raise ValueError(f"settle is 0 seconds to a minute, not {seconds:g} s")
    parameters: dict[str, object] = {"to": uid, "exposureChangeDelayInMs": round(seconds * 1000)}
    if isinstance(exposure, Percent):
        # The first only says that the exposure is given in per cent, the second how many.
        return {**parameters, "exposureInPercent": 100, "gainInPercent": exposure.value}
    seconds = _seconds(exposure, "an exposure")
    microseconds = round(seconds * 1e6)
    if not 1 <= microseconds <= _INT32_MAX:
        raise ValueError(f"an exposure is a microsecond to {_INT32_MAX / 1e6:.0f} s, not {seconds:g} s")
    return {**parameters, "exposureInUs": microseconds}


def _checked_reply(kind: type[_Parsed], value: object) -> _Parsed:
    if not isinstance(value, kind) or isinstance(value, bool):
        raise ProtocolError(f"the reply has {_shortened(value)} where {kind.__name__} is expected")
    return value


def _member(value: dict[str, Any], name: str, kind: type[_Parsed]) -> _Parsed:
    if name not in value:
        raise ProtocolError(f"the reply has no {name}: {_shortened(value)}")
    return _checked_reply(kind, value[name])


def _shortened(value: object) -> str:
    text = repr(value)
    return text if len(text) <= 100 else f"{text[:100]}..."


def _parsed_json(message: bytes) -> dict[str, Any]:
    try:
        value = json.loads(message.decode())
    except (ValueError, RecursionError) as error:
        raise ProtocolError(f"the reply is no JSON: {_shortened(message)}") from error
    return _checked_reply(dict, value)


def _result_of(reply: dict[str, Any], identity: int) -> object:
    if "code" in reply:
        raise MessageRejected(_member(reply, "code", int), _member(reply, "message", str))
    if _member(reply, "id", int) != identity:
        raise ProtocolError(f"a reply to message {reply['id']} came in the place of that to message {identity}")
    if "error" in reply:
        raise MethodFailed(_member(_member(reply, "error", dict), "message", str))
    if "result" not in reply:
        raise ProtocolError(f"the reply has no result: {_shortened(reply)}")
    return reply["result"]


def _microseconds(value: int) -> timedelta:
    if not 0 <= value < 2**63:
        raise ProtocolError(f"an exposure of {_shortened(value)} microseconds")
    return timedelta(microseconds=value)


def _camera(entry: object) -> Camera:
    members = _checked_reply(dict, entry)
    return Camera(
        uid=_member(members, "uid", str),
        make=_member(members, "make", str),
        model=_member(members, "model", str),
        width=_member(members, "resolutionX", int),
        height=_member(members, "resolutionY", int),
        shortest_exposure=_microseconds(_member(members, "exposureMinValueInUs", int)),
        longest_exposure=_microseconds(_member(members, "exposureMaxValueInUs", int)))


def _image_size(head: bytes) -> int:
    """The length of the body that follows the head of a reply."""
    status, *lines = head.decode("iso-8859-1").split("\r\n")
    parts = re.fullmatch(r"HTTP/1\.[01] (\d{3}) ?(.*)", status)
    if parts is None:
        raise ProtocolError(f"the reply begins with {_shortened(status)}")
    if parts[1] == "404":
        raise ImageGone(f"the image is gone: 404 {parts[2]}")
    headers = {name.lower(): value.strip() for name, _, value in (line.partition(":") for line in lines)}
    size = headers.get("content-length", "")
    if parts[1] != "200" or not re.fullmatch(r"\d{1,10}", size, re.ASCII) or int(size) > _LARGEST_IMAGE:
        raise ProtocolError(f"the reply begins with {_shortened(status)} and has a length of {_shortened(size)}")
    return int(size)


def _unpacked(png: bytes) -> tuple[int, int, bytes]:
    """Width, height and filtered rows of a PNG file of the kind that the hub makes (ISO/IEC 15948, 5 and 11.2)."""
    chunks: dict[bytes, bytes] = {}
    position = len(_SIGNATURE)
    packed = bytearray()
    while b"IEND" not in chunks:
        length, kind = struct.unpack_from(">I4s", png, position)
        chunks[kind] = png[position + 8:position + 8 + length]
        if kind == b"IDAT":
            packed += chunks[kind]
        position += length + 12
    width, height, *form = struct.unpack(">IIBBBBB", chunks[b"IHDR"])
    if form != [8, 2, 0, 0, 0] or not 0 < width * height <= _MOST_PIXELS:
        raise ValueError(f"{width}x{height} of the form {form}")
    size = (1 + 3 * width) * height
    rows = zlib.decompressobj().decompress(packed, size + 1)
    if len(rows) != size:
        raise ValueError(f"its rows are not {size} bytes")
    return width, height, rows


def _pixels(png: bytes) -> numpy.typing.NDArray[numpy.uint8]:
    """Undoes the filters (ISO/IEC 15948, 9.2). A pixel needs its neighbours to the left and above: so it goes one
    diagonal after the other, each in one step, from the upper left corner to the lower right one."""
    try:
        import numpy as np
    except ImportError as error:
        raise ImportError("Still.array() needs numpy (the Debian package is python3-numpy)") from error
    try:
        width, height, packed = _unpacked(png)
    except (ValueError, KeyError, struct.error, zlib.error) as error:
        raise ProtocolError(f"the image is no PNG file of a hub: {error}") from error
    rows = np.frombuffer(packed, np.uint8).reshape(height, 1 + 3 * width)
    filters = rows[:, :1]
    if filters.max() > 4:
        raise ProtocolError(f"the image is no PNG file of a hub: a row has the filter {filters.max()}")

    # Black above and to the left, as the filters have it.
    picture = np.zeros((height + 1, width + 1, 3), np.uint8)
    picture[1:, 1:] = rows[:, 1:].reshape(height, width, 3)
    pixels = picture.reshape(-1, 3)
    for diagonal in range(width + height - 1):
        first, last = max(0, diagonal - width + 1), min(diagonal, height - 1)
        begin = (first + 1) * (width + 1) + diagonal - first + 1
        end = begin + (last - first) * width + 1
        left, above, corner = (pixels[begin - back:end - back:width].astype(np.int16)
                               for back in (1, width + 1, width + 2))
        to_left, to_above, to_corner = abs(above - corner), abs(left - corner), abs(left + above - 2 * corner)
        nearest = np.where((to_left <= to_above) & (to_left <= to_corner), left,
                           np.where(to_above <= to_corner, above, corner))
        predictions = (np.zeros_like(left), left, above, (left + above) >> 1, nearest)
        pixels[begin:end:width] += np.choose(filters[first:last + 1], predictions).astype(np.uint8)
    return picture[1:, 1:].copy()
