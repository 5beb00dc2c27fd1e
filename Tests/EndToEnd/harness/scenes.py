"""Picture files that are scenes of simulated cameras."""

import random

from PIL import Image

LEFT, RIGHT = (200, 30, 30), (30, 60, 180)


def plain(folder, colour, size=(64, 48)):
    """A scene of one colour; the file's name in the folder."""
    name = f"{'-'.join(map(str, colour))}.png"
    Image.new("RGB", size, colour).save(folder / name)
    return name


def halves(folder, size):
    """A scene that is LEFT on the one side and RIGHT on the other."""
    image = Image.new("RGB", size, LEFT)
    image.paste(RIGHT, (size[0] // 2, 0, *size))
    image.save(folder / "halves.png")
    return "halves.png"


def noise(folder, size):
    """A scene that cannot be compressed."""
    pixels = random.Random(1).randbytes(size[0] * size[1] * 3)
    Image.frombytes("RGB", size, pixels).save(folder / "noise.png")
    return "noise.png"
