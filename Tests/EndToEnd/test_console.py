"""The console that "--debug" offers before the hub starts: through pipes and at a terminal."""

import json
import re

import pytest
from harness.console import PipedHub, TerminalHub
from harness.hub import EXECUTABLE, ROOT
from harness.locales import make_locale
from harness.scenario import EXPOSURE, camera_group
from PIL import Image

WIDTH, HEIGHT = 64, 48
PATCHES = [(255, 0, 0), (0, 255, 0), (0, 0, 255), (255, 255, 255), (10, 134, 164), (240, 206, 38), (0, 0, 0), (1, 2, 3)]


def text(lines):
    """A bar at the end of a line shows the blanks before it."""
    return lines.replace("|\n", "\n")


GREETING = text("""\
Windows Camera Test Driver |
Type 0 for help
""")
MAIN_HELP = text("""\
You may..
1. List Available Cameras
2. Connect to a listed Camera |
3. Connect to a known camera |
4. List Connected Cameras
5. Act on Connected Cameras.
6. Exit App.

""")
UNKNOWN_CHOICE = "Main> We don't actually have anything implemented for that\n"


@pytest.fixture
def make_hub(tmp_path_factory):
    hubs = []

    def make(kind, scenario, *arguments):
        hubs.append(kind(tmp_path_factory.mktemp("hub"), scenario, *arguments))
        return hubs[-1]

    yield make
    for hub in hubs:
        hub.stop()


@pytest.fixture
def scene(tmp_path):
    """A picture of coloured patches; at the exposure that it is shown at, stills are equal to it."""
    picture = Image.new("RGB", (WIDTH, HEIGHT))
    for i, colour in enumerate(PATCHES):
        picture.paste(colour, (i * 8, 0, i * 8 + 8, HEIGHT))
    file = tmp_path / "scene.png"
    picture.save(file)
    return file


def cameras(*names, hardware=None):
    """One camera a name; the ids are "cam0", "cam1" and so on."""
    ids = [f"cam{i}" for i in range(len(names))]
    groups = [camera_group(uid, WIDTH, HEIGHT, name) for uid, name in zip(ids, names)]
    return {"groups": groups, "cameras": {uid: hardware or {} for uid in ids}}


def found(uid, name):
    """What a listing says of a group of one camera."""
    return f"""\
Found Source Group. Display Name: {name} Id: {uid}#group
  SourceInfo.  Id: {uid}#source StreamType: VideoPreview
  profileId:  SourceKind: Color
    DeviceInfo. Id: {uid} DeviceInfoKind: 1
    Device Name: {name}
"""


def session_scenario(scene):
    hardware = {
        "exposure": EXPOSURE,
        "brightness": {"supported": True, "min": -64, "max": 64, "step": 32, "value": 64},
        "contrast": {"supported": True, "min": 0, "max": 1, "step": 0.25, "value": 0.5},
        "isoSpeedControl": {"supported": True, "value": 200},
        "capture": {"picture": str(scene), "neutralExposure": -5},
    }
    return cameras("Kamera für Anna", "Second", hardware=hardware)


SESSION = ["0", "1", "2", "0", "3", "cam1", "1", "4", "5", "0", "0", "1", "1", "0", "0", "2", "4", "5", "6", "7", "8",
           "9", "10", "10", "11", "12", "1", "11", "13", "15", "14", "6"]  # fmt: skip


def session_transcript(echo):
    """echo(line): what the person's line leaves in the transcript."""

    def capture(number):
        return f"""\
{echo("10")}Capturing..
Auto Exposure:  off |
Exposure time: -4.000000
ISO speed auto: 0
Camera Stream State: 0
Received Picture Id: {{{number}}}
"""

    return text(f"""\
{GREETING}\
Main> {echo("0")}{MAIN_HELP}\
Main> {echo("1")}{found("cam0", "Kamera für Anna")}{found("cam1", "Second")}\
Found these.. |
0.
Kamera für Anna::
64x48
cam0:1

1.
Second::
64x48
cam1:1

Main> {echo("2")}
Connect to Camera..
Which?> {echo("0")}Ok, it's connected now.. Well done! |
Main> {echo("3")}Connect known..
ID?>{echo("cam1")}
Kind?>{echo("1")}
Ok, it's connected now.. Well done! |
Main> {echo("4")}Connected cams..
0: |
Kamera für Anna::
64x48
cam0:1

1: |
Reloaded::
0x0
cam1:1

Main> {echo("5")}Work with connected cam..
Which?> {echo("0")}ActOnCamera> {echo("0")}You may..
1. Converge camera settings
2. Adjust exposure up
3. Adjust exposure down
4. Adjust brightness up
5. Adjust brightness down |
6. Adjust contrast up
7. Adjust contrast down
8. Adjust ISO up
9. Adjust ISO down
10. Capture an image with current settings
11. List available images
12. Save captured image
13. Print image
14. Put down the camera
ActOnCamera> {echo("1")}Converge camera settings..
Exposure?> {echo("1")}
Focus?> {echo("0")}
WhiteBalance?> {echo("0")}

Turning on a preview stream to converge: [exposure] |
Turn auto settings on or off..
Auto Exposure:  on |
No focus control supported
No white balance supported
Converging..
Done... turn off auto settings for future captures..
Auto Exposure:  off |
ActOnCamera> {echo("2")}Exposure range: [-13.000000 , 0.000000
Exposure set to: -4.000000. Latched to: -4.000000
ActOnCamera> {echo("4")}Brightness range: [-64.000000 , 64.000000
Brightness set to: 96.000000. Latched to: 64.000000
ActOnCamera> {echo("5")}Brightness range: [-64.000000 , 64.000000
Brightness set to: 32.000000. Latched to: 32.000000
ActOnCamera> {echo("6")}Contrast range: [0.000000 , 1.000000
Contrast set to: 0.750000. Latched to: 0.750000
ActOnCamera> {echo("7")}Contrast range: [0.000000 , 1.000000
Contrast set to: 0.500000. Latched to: 0.500000
ActOnCamera> {echo("8")}IsoSpeedControl range: [100 , 800
IsoSpeedControl set to: 300. Latched to: 300
ActOnCamera> {echo("9")}IsoSpeedControl range: [100 , 800
IsoSpeedControl set to: 200. Latched to: 200
ActOnCamera> {capture(1)}\
ActOnCamera> {capture(2)}\
ActOnCamera> {echo("11")}Available photos..
1: {{1}}
2: {{2}}
ActOnCamera> {echo("12")}Save an image..
Which?> {echo("1")}
Returning image {{1}}
Saved image to:
 FOLDER/Kamera für Anna/0-{{1}}.png
ActOnCamera> {echo("11")}Available photos..
1: {{2}}
ActOnCamera> {echo("13")}ERROR: PC LOAD LETTER (0x80A4FFE7)
ActOnCamera> {echo("15")}We don't actually have that implemented.. |
ActOnCamera> {echo("14")}Main> {echo("6")}""")


def test_a_whole_session_through_a_pipe(make_hub, scene):
    hub = make_hub(PipedHub, session_scenario(scene)).start_with("\n".join(SESSION) + "\n")
    assert hub.transcript() == session_transcript(lambda line: "")
    assert len(hub.saved_files("Kamera für Anna")) == 1
    hub.wait_for_cameras("cam0", "cam1")


def test_a_whole_session_at_a_terminal(make_hub, scene):
    hub = make_hub(TerminalHub, session_scenario(scene)).start_at_terminal()
    hub.type(*SESSION)
    assert hub.transcript() == session_transcript(lambda line: line + "\n")
    assert len(hub.saved_files("Kamera für Anna")) == 1
    hub.wait_for_cameras("cam0", "cam1")


def test_numbers_have_a_point_in_a_users_language(make_hub, monkeypatch, tmp_path):
    for variable, value in make_locale(tmp_path, "UTF-8").items():
        monkeypatch.setenv(variable, value)
    hub = make_hub(PipedHub, cameras("A", hardware={"exposure": EXPOSURE})).start_with("1 2 0 5 0 2 14 6")
    assert (
        "Exposure range: [-13.000000 , 0.000000\nExposure set to: -5.000000. Latched to: -5.000000\n"
        in hub.transcript()
    )


def documented(document, language):
    """The first block of that language."""
    page = (ROOT / "Docs" / document).read_text(encoding="utf-8")
    return re.search(f"^```{language}\n(.*?)^```$", page, re.MULTILINE | re.DOTALL)[1]


def test_the_documented_session_happens_as_shown(make_hub):
    shown = documented("console.md", "console")
    hub = make_hub(TerminalHub, json.loads(documented("simulated-cameras.md", "json"))).start_at_terminal()
    hub.type(*re.findall(r"^[A-Z]\w+\??> (\d+)$", shown, re.MULTILINE))
    seen = re.sub(" +$", "", hub.transcript(), flags=re.MULTILINE)
    identity = re.search(r"\{.*\}", shown)[0]
    assert seen == re.sub("/.*/build/bin", "FOLDER", shown).replace(identity, "{1}")

    (file,) = hub.saved_files("Desk Camera")
    with Image.open(file) as saved, Image.open(ROOT / "Docs/images/console-picture.png") as picture:
        above_the_caption = (0, 0, 1280, 660)
        assert saved.size == picture.size
        assert saved.crop(above_the_caption).tobytes() == picture.crop(above_the_caption).tobytes()


def test_a_saved_picture_has_the_colours_of_the_scene(make_hub, scene):
    hardware = {"exposure": EXPOSURE, "capture": {"picture": str(scene)}}
    hub = make_hub(PipedHub, cameras("Camera", hardware=hardware)).start_with("1 2 0 5 0 10 12 1 14 6")
    hub.wait_for_ports()
    (file,) = hub.saved_files("Camera")
    with Image.open(file) as saved, Image.open(scene) as expected:
        assert saved.format == "PNG"
        assert saved.size == (WIDTH, HEIGHT)
        assert [saved.convert("RGB").getpixel((i * 8 + 4, 20)) for i in range(len(PATCHES))] == PATCHES
        assert saved.convert("RGB").tobytes() == expected.tobytes()


def test_cameras_are_listed_and_connected_again_for_as_long_as_one_likes(make_hub):
    hub = make_hub(PipedHub, cameras("A")).start_with("1 1 2 0 2 0 4 2 1 5 2 7 6")
    listing = f"Main> {found('cam0', 'A')}Found these.. \n0.\nA::\n64x48\ncam0:1\n\n"
    connecting = "Main> \nConnect to Camera..\nWhich?> Ok, it's connected now.. Well done! \n"
    assert hub.transcript() == (
        GREETING + 2 * listing + 2 * connecting + "Main> Connected cams..\n"
        "0: \nA::\n64x48\ncam0:1\n\n"
        "1: \nA::\n64x48\ncam0:1\n\n"
        "Main> \nConnect to Camera..\nWhich?> We don't have that one, maybe try List Available Cameras\n"
        "Main> Work with connected cam..\n"
        "Which?> We don't have a connected cam there, maybe try List Connected Cams\n"
        + UNKNOWN_CHOICE + "Main> "
    )  # fmt: skip


def test_a_platform_failure_ends_the_console_and_the_hub_starts(make_hub):
    fault = {"message": "Die Kamera klemmt für immer.", "code": -2147024726}
    scenario = cameras("A", hardware={"faults": {"MediaCapture.InitializeAsync": fault}})
    hub = make_hub(PipedHub, scenario).start_with("3 cam0 1 0 0 0")
    assert hub.transcript() == (
        f"{GREETING}Main> Connect known..\nID?>\nKind?>\nDie Kamera klemmt für immer. -2147024726\n"
    )


def test_a_folder_that_cannot_be_made_ends_the_console_and_the_hub_starts(make_hub):
    hub = make_hub(PipedHub, cameras("A"))
    (hub.program_folder / "A").write_text("a file where the folder would be")
    hub.start_with("3 cam0 1 1 2 0 5 1 14 6")
    assert hub.transcript() == (
        f"{GREETING}Main> Connect known..\nID?>\nKind?>\nOk, it's connected now.. Well done! \n"
        f"Main> {found('cam0', 'A')}Found these.. \n0.\nA::\n64x48\ncam0:1\n\n"
        "Main> \nConnect to Camera..\nWhich?> Ok, it's connected now.. Well done! \n"
        "Main> Work with connected cam..\nWhich?> mkdir on FOLDER/A: File exists -2147467259\n"
    )
    hub.wait_for_cameras("cam0")


@pytest.mark.parametrize("name", ["", ".", "..", "../elsewhere", "/elsewhere", "a//b"])
def test_a_camera_name_that_leads_elsewhere_ends_the_console_and_the_hub_starts(make_hub, name):
    hub = make_hub(PipedHub, cameras(name)).start_with("1 2 0 5 0 10 12 1 14 6")
    end = hub.transcript().rpartition("Which?> ")[2]
    assert re.fullmatch(r"CreateFolderAsync on .*: The name does not stay inside its folder\. -2147024809\n", end)
    assert [entry.name for entry in hub.program_folder.iterdir()] == [EXECUTABLE.name]
    assert not (hub.folder / "elsewhere").exists()


def test_a_slash_in_a_camera_name_makes_a_folder_within_a_folder(make_hub):
    hub = make_hub(PipedHub, cameras("Left/Front")).start_with("1 2 0 5 0 10 12 1 14 6")
    assert "Saved image to:\n FOLDER/Left/Front/0-{1}.png\n" in hub.transcript()
    assert len(hub.saved_files("Left/Front")) == 1


def test_a_picture_of_another_camera_ends_the_console_and_the_hub_starts(make_hub):
    hub = make_hub(PipedHub, cameras("A", "B")).start_with("1 2 0 2 1 5 0 10 14 5 1 12 1 0 0")
    assert hub.transcript().endswith(
        "ActOnCamera> Save an image..\nWhich?> \n"
        "This camera does not have image {1}\n"
        "Convert: there is no bitmap -2147024809\n"
    )
    assert [file.stat().st_size for file in hub.saved_files("B")] == [0]


@pytest.mark.parametrize(
    "typed, beginning",
    [("", GREETING), ("list", f"{GREETING}Main> {MAIN_HELP}"), ("9", f"{GREETING}{UNKNOWN_CHOICE}")],
)
def test_input_that_fails_or_ends_repeats_the_prompt_without_end(make_hub, typed, beginning):
    hub = make_hub(PipedHub, cameras("A")).start_with(typed)
    size = len(beginning) + 1000 * len(UNKNOWN_CHOICE)
    assert hub.read(size).decode() == beginning + 1000 * UNKNOWN_CHOICE
    assert hub.is_running()


@pytest.mark.parametrize("arguments", [[], ["x", "--debug"], ["--debugger"], ["--DEBUG"], ["-debug"], ["--debug "]])
def test_the_console_is_offered_for_exactly_one_first_argument(make_hub, arguments):
    hub = make_hub(PipedHub, cameras("A"), arguments).start_with("0\n")
    assert "Camera Test Driver" not in hub.transcript()


def test_later_arguments_do_not_matter(make_hub):
    hub = make_hub(PipedHub, cameras("A"), ["--debug", "x"]).start_with("6\n")
    assert hub.transcript() == f"{GREETING}Main> "
