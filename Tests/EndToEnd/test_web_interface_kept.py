"""The stills that are kept: caching, parts, sizes, names."""

import io

import pytest
from harness.openapi import check_answer
from harness.scenario import EXPOSURE, camera_group
from harness.scenes import LEFT, RIGHT, halves, noise
from PIL import Image

SIZE = (320, 240)
PARTS = {  # of a file of so many bytes: the first and the last byte
    "bytes=0-99": lambda size: (0, 99),
    "bytes=100-100": lambda size: (100, 100),
    "bytes=100-": lambda size: (100, size - 1),
    "bytes=-100": lambda size: (size - 100, size - 1),
    "bytes=-999999999": lambda size: (0, size - 1),
    "bytes=0-999999999": lambda size: (0, size - 1),
    "bytes=5-99999999999999999999999": lambda size: (5, size - 1),
}


@pytest.fixture(scope="module")
def hub(start_shared_hub):
    cameras = {uid: {"exposure": EXPOSURE, "capture": {"picture": picture}}
               for uid, picture in (("cam", "noise.png"), ("halves", "halves.png"))}
    hub = start_shared_hub({"groups": [camera_group(uid, *SIZE) for uid in cameras], "cameras": cameras}, start=False)
    noise(hub.folder, SIZE)
    halves(hub.folder, SIZE)
    return hub.start().wait_for_cameras("cam", "halves")


@pytest.fixture(scope="module")
def web(hub, start_shared_web):
    return start_shared_web(hub.network)


@pytest.fixture(scope="module")
def still(web):
    """Of the camera's neutral exposure: the scene itself."""
    return web.take("cam", exposure="15625us")


@pytest.fixture(params=["png", "jpeg"])
def file(request, still):
    """Where it is, and the names of the operations that give it."""
    return still[request.param], f"getStill{request.param.capitalize()}", f"headStill{request.param.capitalize()}"


def test_the_png_is_the_scene_to_the_last_pixel(hub, web, still):
    with Image.open(io.BytesIO(web.get(still["png"]).body)) as got, Image.open(hub.folder / "noise.png") as scene:
        assert got.format == "PNG"
        assert got.convert("RGB").tobytes() == scene.tobytes()


@pytest.mark.parametrize("width, size", [(None, SIZE), (160, (160, 120)), (16, (16, 12)), (320, SIZE), (321, SIZE),
                                         (8192, SIZE)])
def test_a_jpeg_is_at_most_so_wide_in_proportion_and_never_larger_than_the_still(web, still, width, size):
    answer = web.get(still["jpeg"] + (f"?width={width}" if width else ""))
    check_answer("getStillJpeg", answer)
    with Image.open(io.BytesIO(answer.body)) as picture:
        picture.load()
        assert (picture.format, picture.size) == ("JPEG", size)


def test_a_better_jpeg_is_larger_and_the_quality_is_85_by_itself(web, still):
    sizes = [len(web.get(f"{still['jpeg']}?quality={quality}").body) for quality in (1, 50, 85, 100)]
    assert sizes == sorted(set(sizes))
    assert web.get(still["jpeg"]).body == web.get(f"{still['jpeg']}?quality=85").body


def test_a_small_jpeg_is_the_scene_made_smaller(web):
    still = web.take("halves", exposure="15625us")
    with Image.open(io.BytesIO(web.get(f"{still['jpeg']}?width=32&quality=100").body)) as small:
        for place, colour in (((4, 12), LEFT), ((27, 12), RIGHT)):
            assert max(abs(is_ - was) for is_, was in zip(small.getpixel(place), colour)) < 10


@pytest.mark.parametrize("query", ["width=15", "width=8193", "width=-1", "width=1e3", "width=16.0", "width=", "width",
                                   "width=+64", "width=0x40", "width= 64", "width=99999999999999999999", "quality=0",
                                   "quality=101", "quality=", "quality=85.5", "Width=64", "height=64"])
def test_a_size_that_is_not_as_described_is_refused(web, still, query):
    problem = check_answer("getStillJpeg", web.get(f"{still['jpeg']}?{query.replace(' ', '%20')}"))
    assert problem.kind == "invalid-request"
    assert query.partition("=")[0] in problem.json()["detail"]


def test_a_parameter_that_comes_twice_is_refused(web, still):
    answer = check_answer("getStillJpeg", web.get(f"{still['jpeg']}?width=64&width=64"))
    assert answer.kind == "invalid-request"


def test_a_png_has_no_sizes(web, still):
    for query in ("width=64", "quality=85"):
        assert check_answer("getStillPng", web.get(f"{still['png']}?{query}")).kind == "invalid-request"


def test_it_can_be_cached_for_good_and_is_not_sent_again_to_who_has_it(web, file):
    address, get, _ = file
    first = check_answer(get, web.get(address))
    tag = first.header("ETag")
    for condition in (tag, "*", f'"other", {tag}', f"W/{tag}"):
        again = check_answer(get, web.get(address, {"If-None-Match": condition}))
        assert (again.status, again.header("ETag"), again.body) == (304, tag, b"")
    for condition in ('"other"', '""'):
        assert web.get(address, {"If-None-Match": condition}).body == first.body


def test_different_files_have_different_tags_and_the_same_file_the_same(web, still):
    addresses = [still["png"], still["jpeg"], f"{still['jpeg']}?width=64", f"{still['jpeg']}?width=64&quality=50",
                 f"{still['jpeg']}?quality=50", web.take("cam", settle="0")["png"]]
    tags = [web.get(address).header("ETag") for address in addresses]
    assert len(set(tags)) == len(tags)
    assert tags == [web.get(address).header("ETag") for address in addresses]


@pytest.mark.parametrize("asked", PARTS)
def test_a_part_of_it_is_sent(web, file, asked):
    address, get, _ = file
    whole = web.get(address)
    first, last = PARTS[asked](len(whole.body))
    part = check_answer(get, web.get(address, {"Range": asked}))
    assert (part.status, part.body) == (206, whole.body[first:last + 1])
    assert part.header("Content-Range") == f"bytes {first}-{last}/{len(whole.body)}"
    assert part.header("ETag") == whole.header("ETag")


@pytest.mark.parametrize("asked", ["bytes=999999999-", "bytes=999999999-1000000000", "bytes=-0",
                                   "bytes=99999999999999999999999-"])
def test_a_part_behind_the_end_is_refused_with_the_size(web, file, asked):
    address, get, _ = file
    answer = check_answer(get, web.get(address, {"Range": asked}))
    assert (answer.status, answer.kind) == (416, "range-not-satisfiable")
    assert answer.header("Content-Range") == f"bytes */{len(web.get(address).body)}"


@pytest.mark.parametrize("asked", ["bytes=0-1,4-5", "bytes=", "bytes=-", "bytes=5-3", "bytes=a-b", "items=0-1", "0-1",
                                   "bytes", "bytes=--5", "bytes=1-2-3", "bytes=0x0-0x5", ""])
def test_what_is_not_one_range_of_bytes_is_not_looked_at(web, file, asked):
    address, get, _ = file
    answer = check_answer(get, web.get(address, {"Range": asked}))
    assert (answer.status, answer.body) == (200, web.get(address).body)


def test_a_part_is_sent_only_of_the_file_whose_rest_the_client_has(web, file):
    address, get, _ = file
    whole = web.get(address)
    fitting = check_answer(get, web.get(address, {"Range": "bytes=0-9", "If-Range": whole.header("ETag")}))
    assert (fitting.status, fitting.body) == (206, whole.body[:10])
    for other in ('"other"', f"W/{whole.header('ETag')}", "Sun, 22 Nov 2026 12:00:00 GMT"):
        answer = check_answer(get, web.get(address, {"Range": "bytes=0-9", "If-Range": other}))
        assert (answer.status, answer.body) == (200, whole.body)


def test_who_has_it_gets_no_part_of_it_either(web, file):
    address, _, _ = file
    tag = web.get(address).header("ETag")
    assert web.get(address, {"Range": "bytes=0-9", "If-None-Match": tag}).status == 304


def test_the_head_is_that_of_the_file(web, file):
    address, get, head = file
    for headers in ({}, {"If-None-Match": web.get(address).header("ETag")}):
        whole = check_answer(get, web.get(address, headers))
        with web.connection() as connection:
            bare = check_answer(head, connection.request("HEAD", address, headers))
            volatile = ("date", "connection", "keep-alive")
            assert bare.status == whole.status
            assert [each for each in bare.headers if each[0].lower() not in volatile] == [
                each for each in whole.headers if each[0].lower() not in volatile]
            assert connection.request("GET", address).status == 200  # there was nothing behind the head


def test_it_is_saved_by_its_name_where_that_is_asked_for(web, still):
    name = still["fileName"]
    answer = check_answer("getStillPng", web.get(f"{still['png']}?download"))
    assert answer.header("Content-Disposition").startswith("attachment")
    assert f'filename="{name}"' in answer.header("Content-Disposition")
    answer = check_answer("getStillJpeg", web.get(f"{still['jpeg']}?download&width=64"))
    assert f'filename="{name.removesuffix(".png")}.jpg"' in answer.header("Content-Disposition")
    shown = web.get(still["png"]).header("Content-Disposition")
    assert shown is None or shown.startswith("inline")


@pytest.mark.parametrize("query", ["download&download", "Download", "x"])
def test_a_parameter_that_is_not_described_is_refused(web, still, query):
    assert check_answer("getStillPng", web.get(f"{still['png']}?{query}")).kind == "invalid-request"


@pytest.mark.parametrize("name", ["0" * 32 + ".png", "0" * 32 + ".jpg", ".png", "x.png", "ID.gif", "ID", "ID.PNG",
                                  "ID.png.png", "ID.png/", "ID/.png", "..%2Fstills%2FID.png", "ID.jpeg"])
def test_what_is_not_kept_is_not_found(web, still, name):
    answer = web.get(f"/api/stills/{name.replace('ID', still['id'])}")
    assert check_answer("getStillPng", answer).kind == "not-found"


def test_no_more_memory_is_held_than_was_told_but_always_the_latest(start_hub, start_web):
    size = (640, 480)  # 0.9 MiB each
    hub = start_hub({"groups": [camera_group("cam", *size)], "cameras": {"cam": {"capture": {"picture": "noise.png"}}}},
                    start=False)
    noise(hub.folder, size)
    hub.start().wait_for_cameras("cam")
    web = start_web(hub.network, "--keep-memory", 2)
    taken = [web.take("cam", settle="0") for _ in range(4)]
    listed = web.get("/api/stills").json()["stills"]
    assert [still["id"] for still in listed] == [still["id"] for still in taken[:1:-1]]
    assert sum(still["bytes"] for still in listed) <= 2 << 20 < sum(still["bytes"] for still in taken[1:])
