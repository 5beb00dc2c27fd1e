"""Files that a program is still writing."""


def complete_lines(file):
    """The lines that have been written to their end; none if the file is not there, or goes."""
    try:
        written = file.read_bytes()
    except FileNotFoundError:
        return []
    return written[:written.rfind(b"\n") + 1].decode().split("\n")[:-1]
