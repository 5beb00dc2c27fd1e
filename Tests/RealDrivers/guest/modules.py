"""The kernel's modules, loaded and taken out as a test needs them."""

import os
import subprocess


def load(name, *options):
    _modprobe(name, *options)


def remove(name):
    _modprobe("--remove", name)


def _modprobe(*arguments):
    subprocess.run(["modprobe", "--dirname", os.environ["KERNEL_TREE"], *arguments], check=True)
