"""What the Python client library sends, and what it refuses to send."""

import math
import socket
from datetime import timedelta
from decimal import Decimal
from pathlib import Path

import pytest
from camera_hub import Hub, Percent
from harness.python_client import IMAGE_ID, PNG, captured, image, in_background
from harness.wait import PATIENCE


def test_a_capture_is_sent_as_whole_numbers(serve):
    peers = serve([captured()] * 3)
    peers.client.capture("desk", timedelta(microseconds=20000), settle=timedelta(milliseconds=250))
    peers.client.capture("desk", 1 / 3, settle=0.0004)
    peers.client.capture("desk", Percent(25), settle=60)
    assert peers.calls == [
        ("camera:capture", {"to": "desk", "exposureInUs": 20000, "exposureChangeDelayInMs": 250}),
        ("camera:capture", {"to": "desk", "exposureInUs": 333333, "exposureChangeDelayInMs": 0}),
        ("camera:capture", {"to": "desk", "exposureInPercent": 100, "gainInPercent": 25,
                            "exposureChangeDelayInMs": 60000}),
    ]
    assert all(type(value) in (int, str) for _, parameters in peers.calls for value in parameters.values())


def test_an_image_is_asked_for_on_a_connection_of_its_own_and_nothing_follows(serve):
    peers = serve([], [image(PNG), image(PNG)], ends=False)
    assert peers.client.fetch(IMAGE_ID) == peers.client.fetch(IMAGE_ID.upper()) == PNG
    line = "GET /res/{} HTTP/1.1\r\nHost: 127.0.0.1"
    assert [request.decode() for request in peers.images.requests] == [
        line.format(IMAGE_ID), line.format(IMAGE_ID.upper())]
    assert peers.images.rest == b""


def test_an_address_of_version_6_is_one(network):
    with network.run(socket.create_server, ("::1", 0), family=socket.AF_INET6) as listener:
        port = listener.getsockname()[1]
        with network.run(Hub, "::1", message_port=port, image_port=port) as hub:
            thread, errors = in_background(network.run, hub.fetch, IMAGE_ID, timeout=PATIENCE)
            messages, images = (listener.accept()[0] for _ in range(2))
            with messages, images:
                assert images.recv(1000).endswith(b"\r\nHost: [::1]\r\n\r\n")
                images.sendall(image(PNG))
                thread.join(PATIENCE)
                assert errors == []


CAPTURES = [
    (TypeError, {"camera": camera}) for camera in (None, 7, 1.5, True, b"desk", ["desk"], {"uid": "desk"})
] + [
    (ValueError, {"camera": camera}) for camera in ("", "a\0b", "\ud800")
] + [
    (TypeError, {"exposure": exposure}) for exposure in (None, "20ms", True, [1], Decimal(1), 1j, Percent)
] + [
    (ValueError, {"exposure": exposure})
    for exposure in (0, -1, 1e-9, 2148, 20000, math.nan, math.inf, -math.inf, 1e308, 10**400, timedelta(0),
                     timedelta(days=1), -timedelta(microseconds=1), timedelta.max)
] + [
    (TypeError, {"settle": settle}) for settle in (None, "1", True, [])
] + [
    (ValueError, {"settle": settle})
    for settle in (-1, -0.001, 61, math.nan, math.inf, 2**31, 10**400, -timedelta(seconds=1), timedelta(minutes=2))
] + [
    (TypeError, {"timeout": timeout}) for timeout in ("1", True)
] + [
    (ValueError, {"timeout": timeout}) for timeout in (0, -1, math.nan, math.inf, 10**6, timedelta(0))
]


@pytest.mark.parametrize("error, arguments", CAPTURES, ids=lambda value: ascii(value)[:40])
@pytest.mark.parametrize("method", ["capture", "take_still"])
def test_an_argument_that_no_hub_can_take_is_refused_before_anything_is_sent(serve, method, error, arguments):
    peers = serve(ends=True)
    with pytest.raises(error):
        getattr(peers.client, method)(**{"camera": "desk"} | arguments)
    peers.client.object.close()
    assert peers.messages.gone.wait(PATIENCE)
    assert (peers.messages.requests, peers.messages.rest) == ([], b"")


@pytest.mark.parametrize(
    "error, method, argument",
    [(TypeError, "fetch", value) for value in (None, 7, b"id", Path("x"))]
    + [(ValueError, "fetch", value)
       for value in ("", "none", IMAGE_ID + "\r\n", IMAGE_ID[:-1], IMAGE_ID + "0", f" {IMAGE_ID}", "../" + IMAGE_ID,
                     IMAGE_ID.replace("-", "%2d"), IMAGE_ID.replace("0", "\u0660"), IMAGE_ID + "\n")]
    + [(TypeError, "redirect_diagnostics", value) for value in (None, 7, b"/Diagnostics", ["/Diagnostics"])]
    + [(ValueError, "redirect_diagnostics", value)
       for value in ("", "/tmp", "/diagnostics/mine", "/Diagnostics/\0", "/Diagnostics/\udcff")],
    ids=lambda value: ascii(value)[:40],
)
def test_so_is_what_is_no_image_id_or_no_path_for_diagnostics(serve, error, method, argument):
    peers = serve(ends=True)
    with pytest.raises(error):
        getattr(peers.client, method)(argument)
    peers.client.object.close()
    assert peers.messages.gone.wait(PATIENCE)
    assert (peers.messages.requests, peers.messages.rest, peers.images.requests) == ([], b"", [])


@pytest.mark.parametrize("value, error", [(-1, ValueError), (101, ValueError), (50.0, TypeError), (True, TypeError)])
def test_per_cent_are_a_whole_number_up_to_100(value, error):
    with pytest.raises(error):
        Percent(value)


@pytest.mark.parametrize(
    "error, arguments",
    [(TypeError, {"host": value}) for value in (None, 7, b"localhost")]
    + [(ValueError, {"host": value}) for value in ("", "a b", "a\r\nTransfer-Encoding: chunked", "a\0", "Gerät")]
    + [(TypeError, {port: value}) for port in ("message_port", "image_port") for value in ("3141", 1.0, True, None)]
    + [(ValueError, {port: value}) for port in ("message_port", "image_port") for value in (0, -1, 65536)]
    + [(ValueError, {name: 0}) for name in ("connect_timeout", "call_timeout")]
    + [(TypeError, {name: None}) for name in ("connect_timeout", "call_timeout")],
    ids=lambda value: ascii(value)[:40],
)
def test_an_address_that_is_none_is_refused(error, arguments):
    with pytest.raises(error):
        Hub(**arguments)
