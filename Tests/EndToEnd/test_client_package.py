"""The C++ client library as programs of others find it: installed, for CMake and for pkg-config."""

import os
import re
import shutil
import subprocess

import pytest
from harness.guides import guide_commands
from harness.hub import EXECUTABLE, PRESET, ROOT
from harness.scenario import scenario
from harness.wait import PATIENCE

BUILD = EXECUTABLE.parent.parent
EXAMPLE = ROOT / "Examples/client"
GUIDE = ROOT / "Docs/client-libraries.md"

# What a sanitizer or a count of lines puts into a library, the programs that use it would need as well.
pytestmark = pytest.mark.skipif(PRESET not in ("release", "debug"), reason="the library is no ordinary one")


def run(*command, **options):
    result = subprocess.run([str(word) for word in command], capture_output=True, text=True, timeout=10 * PATIENCE,
                            check=False, **options)
    assert result.returncode == 0, result.stdout + result.stderr
    return result.stdout


def documented(pattern):
    """What the guide's part on C++ has of that."""
    part = GUIDE.read_text(encoding="utf-8").partition("\n## C++\n")[2].partition("\n## ")[0]
    return re.findall(pattern, part, re.MULTILINE | re.DOTALL)


def install(build, prefix):
    """With the commands of the guide."""
    commands = guide_commands("Docs/client-libraries.md", "cmake --install ")
    assert len(commands) == 2
    for command in commands:
        words = {"build": build, "PREFIX": prefix}
        run(*(words.get(word, word) for word in command.split()))
    return prefix


@pytest.fixture(scope="module")
def archive(tmp_path_factory):
    """Where the static library of the build under test has been installed, and moved to afterwards."""
    folder = tmp_path_factory.mktemp("static")
    return install(BUILD, folder / "first").rename(folder / "moved")


@pytest.fixture(scope="module")
def shared(tmp_path_factory):
    """Where the library has been installed as its packages have it."""
    folder = tmp_path_factory.mktemp("shared")
    run("cmake", "-S", ROOT, "-B", folder / "build", "-G", "Ninja", "-DHUB_CLIENT_SHARED=ON",
        "-DCMAKE_INSTALL_LIBDIR=lib/x86_64-linux-gnu")
    run("cmake", "--build", folder / "build", "--target", "CameraHubClient")
    return install(folder / "build", folder / "usr")


@pytest.fixture(scope="module")
def hub(start_shared_hub):
    return start_shared_hub(scenario("desk")).wait_for_cameras("desk")


def takes_a_still(hub, program, folder, environment=None):
    output = hub.network.run(run, program, "localhost", folder / "still.png", env=environment)
    assert output.splitlines() == ["desk:  , 64 x 48, 122 to 1000000 us", "exposure: 15625 us"]
    assert (folder / "still.png").read_bytes().startswith(b"\x89PNG")


def build_with_cmake(prefix, folder):
    # Away from the tree: nothing of it is found but what is installed.
    shutil.copytree(EXAMPLE, folder / "source")
    run("cmake", "-S", folder / "source", "-B", folder / "build", f"-DCMAKE_PREFIX_PATH={prefix}",
        "-DCMAKE_CXX_FLAGS=-Wall -Wextra -Wpedantic -Werror")
    run("cmake", "--build", folder / "build")
    return folder / "build/still"


def build_with_pkg_config(library_folder, source, folder, option=""):
    """With the command of the guide."""
    (command,) = guide_commands("Docs/client-libraries.md", "c++ ")
    shutil.copy(source, folder / "main.cpp")
    environment = os.environ | {"PKG_CONFIG_PATH": str(library_folder / "pkgconfig")}
    run("bash", "-e", "-c", command.replace("pkg-config", f"pkg-config {option}"), cwd=folder, env=environment)
    return folder / "still"


def test_the_example_is_built_by_cmake_with_the_archive(hub, archive, tmp_path):
    takes_a_still(hub, build_with_cmake(archive, tmp_path), tmp_path)


def test_the_example_is_built_by_pkg_config_with_the_archive(hub, archive, tmp_path):
    takes_a_still(hub, build_with_pkg_config(archive / "lib", EXAMPLE / "main.cpp", tmp_path, "--static"), tmp_path)


def test_the_example_is_built_by_cmake_with_the_shared_library(hub, shared, tmp_path):
    takes_a_still(hub, build_with_cmake(shared, tmp_path), tmp_path)


def test_the_example_is_built_by_pkg_config_with_the_shared_library(hub, shared, tmp_path):
    folder = shared / "lib/x86_64-linux-gnu"
    program = build_with_pkg_config(folder, EXAMPLE / "main.cpp", tmp_path)
    takes_a_still(hub, program, tmp_path, environment={"LD_LIBRARY_PATH": str(folder)})


def test_the_program_of_the_guide_takes_a_still(hub, archive, tmp_path):
    (text,) = documented(r"^```cpp\n(.*?)^```$")
    (tmp_path / "guide.cpp").write_text(text)
    program = build_with_pkg_config(archive / "lib", tmp_path / "guide.cpp", tmp_path, "--static")
    hub.network.run(run, program, cwd=tmp_path)
    assert (tmp_path / "still.png").read_bytes().startswith(b"\x89PNG")


def test_the_guide_shows_the_build_list_of_the_example_and_every_error():
    (text,) = documented(r"^```cmake\n(.*?)^```$")
    assert set(text.splitlines()) <= set((EXAMPLE / "CMakeLists.txt").read_text().splitlines())
    headers = (ROOT / "Client/CameraHubClient/Errors.h").read_text()
    kinds = re.findall(r"^class CAMERA_HUB_CLIENT_EXPORT (\w+) : public (?:Error|Refusal)", headers, re.MULTILINE)
    assert documented(r"^\| `(\w+)` \|") == [kind for kind in kinds if kind != "Refusal"]


def test_the_shared_library_shows_nothing_but_its_interface(shared):
    library = shared / "lib/x86_64-linux-gnu/libcamera-hub-client.so.2"
    names = run("nm", "--dynamic", "--defined-only", "--demangle", "--format=just-symbols", library).splitlines()
    own = [name for name in names if "CameraHub::" in name]
    assert "CameraHub::CameraHubClient::discover()" in own
    assert [name for name in own if "Connection::" in name or "Json::" in name or "Descriptor" in name] == []
    assert [name for name in names if name.startswith("Json::")] == []


def test_what_programs_run_with_is_apart_from_what_they_are_built_with(shared, tmp_path):
    build = shared.parent / "build"
    run("cmake", "--install", build, "--prefix", tmp_path, "--component", "client-lib")
    installed = sorted(path.name for path in tmp_path.rglob("*") if not path.is_dir())
    assert installed == ["libcamera-hub-client.so.2", "libcamera-hub-client.so.2.9.0"]


def test_every_public_header_stands_on_its_own(archive, tmp_path):
    headers = sorted(path.name for path in (archive / "include/CameraHubClient").iterdir())
    assert headers == sorted(path.name for path in (ROOT / "Client/CameraHubClient").glob("*.h"))
    for header in headers:
        source = tmp_path / "one.cpp"
        source.write_text(f"#include <CameraHubClient/{header}>\n#include <CameraHubClient/{header}>\n")
        run("c++", "-std=c++17", "-Wall", "-Wextra", "-Wpedantic", "-Werror", "-fsyntax-only",
            f"-I{archive / 'include'}", source)
