"""A user's language and character set in which numbers, months and text are unlike the hub's own."""

import subprocess


def make_locale(folder, charset):
    """Compiles French in that character set, from the sources of Debian's package locales; the environment in which
    programs use it."""
    name = f"fr_FR.{charset}"
    subprocess.run(["localedef", "--inputfile=fr_FR", f"--charmap={charset}", folder / name], check=True)
    environment = {"LOCPATH": str(folder), "LC_ALL": name, "LANG": name}
    number = subprocess.run(["/usr/bin/printf", "%.1f", "0,5"], env=environment, capture_output=True, check=True)
    assert number.stdout == b"0,5"
    return environment
