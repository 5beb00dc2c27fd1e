"""Port 3142: the image route, and requests of every shape."""

import time

import pytest
from harness.scenario import scenario
from harness.wait import wait_until

NOT_FOUND = (
    b"HTTP/1.1 404 Not Found\r\nContent-Type: text/html\r\nTransfer-Encoding: chunked\r\n\r\n"
    b"4C\r\n<html><title>404 Not Found</title><body><h1>404 Not Found</h1></body></html>\r\n0\r\n\r\n"
)
NO_IMAGE = (
    b"HTTP/1.1 404 Image does not exist\r\nContent-Type: text/html\r\nTransfer-Encoding: chunked\r\n\r\n"
    b"62\r\n<html><title>404 Image does not exist</title><body><h1>404 Image does not exist</h1></body></html>\r\n"
    b"0\r\n\r\n0\r\n\r\n"
)


@pytest.fixture(scope="module")
def hub(start_shared_hub):
    return start_shared_hub(scenario("cam", "other")).wait_for_cameras("cam", "other")


@pytest.fixture(scope="module")
def rpc(hub):
    return hub.rpc()


@pytest.fixture
def resid(rpc):
    return rpc.capture("cam", exposureInUs=20000)["resid"]


def assert_exchange(connection, request, response):
    connection.send(request)
    assert connection.receive_exactly(len(response)) == response


def test_an_image_has_its_length_and_its_type_and_no_chunks(hub, resid):
    response = hub.get(f"/res/{resid}")
    head = f"HTTP/1.1 200 OK\r\nContent-Length: {len(response.body)}\r\nContent-Type: image/png\r\n\r\n"
    assert response.head == head.encode()
    assert response.body.startswith(b"\x89PNG\r\n\x1a\n") and response.body.endswith(b"IEND\xaeB`\x82")


def test_the_same_get_twice_gives_two_identical_replies(hub, resid):
    connection = hub.http()
    assert connection.get(f"/res/{resid}") == connection.get(f"/res/{resid}")


def test_two_requests_in_one_segment_get_two_replies_in_order(hub, resid):
    connection = hub.http()
    connection.send(f"GET /none HTTP/1.1\r\n\r\nGET /res/{resid} HTTP/1.1\r\n\r\n".encode())
    assert connection.receive_exactly(len(NOT_FOUND)) == NOT_FOUND
    assert connection.receive_response().status == 200


def test_a_query_is_not_part_of_the_image_id(hub, resid):
    assert hub.get(f"/res/{resid}?size=large").status == 200


def test_the_path_is_compared_as_sent(hub, resid):
    assert hub.get(f"/res/{resid.replace('-', '%2d')}").status == 404


@pytest.mark.parametrize("path", ["/res/", "/res/none", "/res/?x", "/res/a/b"])
def test_an_id_without_an_image_gives_404_and_five_spare_bytes(hub, path):
    connection = hub.http()
    assert_exchange(connection, f"GET {path} HTTP/1.1\r\n\r\n".encode(), NO_IMAGE)
    assert not connection.has_bytes_within(0.1)


@pytest.mark.parametrize("path", ["/", "/res", "/other", "/RES/x", "/xres/x", "*"])
def test_a_path_without_a_route_gives_404_not_found(hub, path):
    connection = hub.http()
    assert_exchange(connection, f"GET {path} HTTP/1.1\r\n\r\n".encode(), NOT_FOUND)
    assert not connection.has_bytes_within(0.1)


@pytest.mark.parametrize("line", ["GET", "GET /res/x", "nonsense", "GET  /res/x HTTP/1.1"])
def test_a_request_line_without_a_path_gives_404_not_found(hub, line):
    assert_exchange(hub.http(), f"{line}\r\n\r\n".encode(), NOT_FOUND)


def test_a_request_split_byte_by_byte_is_answered_after_its_empty_line(hub):
    connection = hub.http()
    for byte in b"GET /other HTTP/1.1\r\nHost: x\r\n\r":
        connection.send(bytes([byte]))
    assert not connection.has_bytes_within(0.2)
    assert_exchange(connection, b"\n", NOT_FOUND)


def test_a_new_capture_drops_the_image_of_the_one_before(hub, rpc, resid):
    newer = rpc.capture("cam", exposureInUs=20000)["resid"]
    assert hub.get(f"/res/{resid}").status == 404
    assert hub.get(f"/res/{newer}").status == 200


def test_a_capture_of_another_camera_and_client_drops_the_image_too(hub, resid):
    other = hub.rpc()
    newer = other.capture("other", exposureInUs=20000)["resid"]
    other.close()
    assert hub.get(f"/res/{resid}").status == 404
    assert hub.get(f"/res/{newer}").status == 200


@pytest.mark.parametrize("method", ["POST", "HEAD", "get", "PUT"])
def test_another_method_on_the_image_route_is_never_answered_and_holds_its_connection_up(hub, resid, method):
    connection = hub.http()
    connection.send(f"{method} /res/{resid} HTTP/1.1\r\n\r\n".encode())
    connection.send(f"GET /res/{resid} HTTP/1.1\r\n\r\n".encode())
    assert not connection.has_bytes_within(0.3)
    assert hub.get(f"/res/{resid}").status == 200


def test_a_body_of_the_given_length_is_dropped(hub):
    body = b"GET /other HTTP/1.1\r\n\r\n"  # would be answered
    request = b"GET /other HTTP/1.1\r\nContent-Length: %d\r\n\r\n" % len(body) + body
    assert_exchange(hub.http(), request + b"GET /res/none HTTP/1.1\r\n\r\n", NOT_FOUND + NO_IMAGE)


def test_a_content_length_of_0_is_no_body(hub):
    request = b"GET /other HTTP/1.1\r\nContent-Length: 0\r\n\r\n"
    assert_exchange(hub.http(), request + request, NOT_FOUND + NOT_FOUND)


def test_a_content_length_in_small_letters_is_not_seen(hub):
    connection = hub.http()
    request = b"GET /other HTTP/1.1\r\ncontent-length: 22\r\n\r\nGET /other HTTP/1.1\r\n\r\n"
    assert_exchange(connection, request, NOT_FOUND + NOT_FOUND)


def test_connection_close_leaves_the_connection_open(hub):
    connection = hub.http()
    assert_exchange(connection, b"GET /other HTTP/1.1\r\nConnection: close\r\n\r\n", NOT_FOUND)
    assert_exchange(connection, b"GET /other HTTP/1.0\r\n\r\n", NOT_FOUND)


@pytest.mark.parametrize("path, reply", [("/res/", NO_IMAGE), ("/other/", NOT_FOUND)])
def test_a_path_of_a_million_characters_is_answered(hub, path, reply):
    assert_exchange(hub.http(), f"GET {path + 'a' * 1_000_000} HTTP/1.1\r\n\r\n".encode(), reply)


@pytest.mark.parametrize(
    "request_head",
    [
        b"\r\n",
        b"GET /other HTTP/1.1\r\nTransfer-Encoding: chunked\r\n\r\n",
        b"GET /other HTTP/1.1\r\nTransfer-Encoding: gzip\r\n\r\n",
        b"GET /other HTTP/1.1\r\nTransfer-Encoding: Chunked\r\n\r\n",
    ],
)
def test_a_head_without_a_line_and_every_transfer_coding_hold_the_whole_hub_for_good(start_hub, request_head):
    hub = start_hub(scenario())
    bystander = hub.rpc()
    assert bystander.discover() == []
    hub.http().send(request_head)
    used = processor_seconds(hub)
    wait_until(lambda: processor_seconds(hub) > used + 0.5, "the hub burns processor time")
    bystander.send('{"id":1,"method":"camera:version"}')
    assert not bystander.has_bytes_within(1)
    assert hub.is_running()


def processor_seconds(hub):
    fields = hub.proc("stat").read_text(encoding="ascii").rpartition(") ")[2].split()
    return (int(fields[11]) + int(fields[12])) / 100  # clock ticks; 100 a second on every Linux


def test_a_get_while_a_capture_runs_waits_for_its_end(start_hub):
    camera = {"capture": {"delayMs": 700}}
    hub = start_hub(scenario("cam", camera=camera)).wait_for_cameras("cam")
    rpc, http = hub.rpc(), hub.http()
    rpc.capture("cam", exposureInUs=1000)
    begin = time.monotonic()
    rpc.send('{"id":1,"method":"camera:capture","params":{"to":"cam","exposureInUs":1000}}')
    still = "MediaCapture.CapturePhotoToStreamAsync"
    wait_until(lambda: [line["call"] for line in hub.journal()].count(still) >= 3, "the second still has begun")
    assert http.get("/other").status == 404
    assert time.monotonic() - begin >= 0.7
