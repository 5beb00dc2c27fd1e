"""The journal of platform calls, in a short form to compare with."""


def short(line):
    """"Call [arguments]", "Call(Control) [arguments]", or, for the end of an asynchronous call, "Call ended"."""
    text = line["call"]
    if "control" in line:
        text += f"({line['control']})"
    if line.get("ended"):
        text += " ended"
    elif "args" in line:
        text += f" {line['args']}"
    if "error" in line:
        text += f" failed {line['error']}"
    return text


def shorts(lines):
    return [short(line) for line in lines]


def begins(lines, call):
    """The calls of that name, without the lines that tell how an asynchronous one ended."""
    return [line for line in lines if line["call"] == call and not line.get("ended")]
