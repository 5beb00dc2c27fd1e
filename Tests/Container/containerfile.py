#!/usr/bin/python3
"""Does the steps of a container file in folders, where no container engine runs: as far as ours needs that.

Usage: containerfile.py FILE CONTEXT STAGES; as root. Leaves the last stage in STAGES/last, and STAGES/run, which starts
its entry point as its user."""

import glob
import json
import re
import shlex
import shutil
import subprocess
import sys
from pathlib import Path

# Followed by a root and a command: it finds /proc below that root, where nobody else sees it.
IN_A_ROOT = ["unshare", "--mount", "sh", "-c", 'mount -t proc proc "$0/proc" && exec "$@"']

RELEASE = re.compile(r"debian:(\w+)-slim")


def steps(text):
    """The instructions, each with what stands behind it."""
    lines = re.sub(r"\\\n", " ", re.sub(r"^#.*\n", "", text, flags=re.MULTILINE)).splitlines()
    return [line.split(maxsplit=1) for line in lines if line.strip()]


def mirror():
    """Where this machine has its own packages from."""
    command = ["apt-get", "indextargets", "--format", "$(REPO_URI)", "Created-By: Packages", "Codename: bookworm"]
    return subprocess.run(command, stdout=subprocess.PIPE, text=True, check=True).stdout.split()[0]


class Stages:
    def __init__(self, context, folder):
        self._context, self._folder = Path(context), Path(folder)
        self._named = {}
        self._environment, self._owner = {}, "root"
        self._folder.mkdir()

    def do(self, instruction, words):
        getattr(self, f"_{instruction.lower()}")(words)

    def _from(self, words):
        image, *name = words.split()
        base = self._folder / "base"
        if not base.exists():
            release = RELEASE.fullmatch(image).group(1)
            subprocess.run(["debootstrap", "--variant=minbase", release, base, mirror()], check=True,
                           stdout=subprocess.DEVNULL)
        self._root = self._folder / (name[1] if name else "last")
        subprocess.run(["cp", "-a", base, self._root], check=True)
        self._named[self._root.name] = self._root

    def _copy(self, words):
        *options, source, target = words.split()
        begin = self._named[options[0].removeprefix("--from=")] if options else self._context
        into = self._root / target.lstrip("/")
        if source == ".":
            shutil.copytree(begin, into, symlinks=True)
            return
        found = glob.glob(source.lstrip("/"), root_dir=begin)
        assert found, f"COPY {words}: there is nothing"
        for path in found:
            shutil.copy2(begin / path, into)

    def _run(self, words):
        subprocess.run([*IN_A_ROOT, self._root, "chroot", self._root, "sh", "-c", words], check=True)

    def _env(self, words):
        self._environment |= dict(word.split("=", 1) for word in shlex.split(words))

    def _user(self, words):
        self._owner = words

    def _volume(self, words):
        assert (self._root / words.lstrip("/")).is_dir()

    def _expose(self, words):
        assert words == "3141 3142"

    def _entrypoint(self, words):
        program = " ".join(shlex.quote(word) for word in json.loads(words))
        settings = " ".join(f"{name}={shlex.quote(value)}" for name, value in self._environment.items())
        run = self._folder / "run"
        mounting = shlex.join([*IN_A_ROOT, str(self._root)])
        entering = f"chroot --userspec={self._owner} {self._root}"
        run.write_text(f"#!/bin/sh\nexec env {settings} {mounting} {entering} {program}\n", encoding="utf-8")
        run.chmod(0o755)


def main(file, context, folder):
    stages = Stages(context, folder)
    for instruction, words in steps(Path(file).read_text(encoding="utf-8")):
        print(instruction, words, flush=True)
        stages.do(instruction, words)


if __name__ == "__main__":
    main(*sys.argv[1:])
