#!/usr/bin/env python3
"""Lists the cameras of a Camera Hub, or takes a still and saves it as a PNG file.

    python3 capture.py --list
    python3 capture.py --exposure-us 20000 -o picture.png
"""

import argparse
import http.client
import json
import pathlib
import socket
import sys

RPC_PORT, HTTP_PORT = 3141, 3142
COLUMNS = "uid", "make", "model", "resolutionX", "resolutionY", "exposureMinValueInUs", "exposureMaxValueInUs"
EXPOSURE_UNSET = -(2**63)  # reported when the exposure could not be set or read back


class HubError(Exception):
    pass


class Hub:
    """A connection to a hub. The camera of the latest capture stays open for as long as it lives."""

    def __init__(self, host):
        self.host = host
        self.socket = socket.create_connection((host, RPC_PORT), timeout=60)

    def call(self, method, **params):
        request = json.dumps({"jsonrpc": "2.0", "id": 1, "method": method, "params": params})
        self.socket.sendall(request.encode() + b"\0")
        reply = json.loads(self.read_message())
        if "code" in reply:  # the request was no JSON
            raise HubError(f"{reply['message']} ({reply['code']})")
        if "error" in reply:  # the method is unknown, or the camera failed
            raise HubError(reply["error"]["message"])
        result = reply["result"]
        if isinstance(result, dict) and "code" in result:  # there was nothing to capture from
            raise HubError(f"{result['message']} (code {result['code']})")
        return result

    def read_message(self):
        message = b""  # ends with a NUL, as each request does
        while not message.endswith(b"\0"):
            received = self.socket.recv(65536)
            if not received:
                raise HubError("the hub has closed the connection without an answer")
            message += received
        return message[:-1]

    def fetch_image(self, resid):
        connection = http.client.HTTPConnection(self.host, HTTP_PORT, timeout=60)
        connection.request("GET", f"/res/{resid}")
        response = connection.getresponse()
        if response.status != 200:  # another capture came in between, or the camera delivered nothing
            raise HubError(f"no image: {response.status} {response.reason}")
        return response.read()


def print_table(cameras):
    row = "{:30} {:20} {:20} {:>11} {:>11} {:>20} {:>20}".format
    print(row(*COLUMNS))
    for camera in cameras:
        print(row(*(camera[column] for column in COLUMNS)))


def capture(hub, uid, args):
    result = hub.call("camera:capture", to=uid, exposureInUs=args.exposure_us, exposureChangeDelayInMs=args.delay_ms)
    pathlib.Path(args.output).write_bytes(hub.fetch_image(result["resid"]))
    latched = result["exposureInUs"]
    print("exposure:", "could not be set" if latched == EXPOSURE_UNSET else f"{latched} us")


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--host", default="localhost", help="where the hub runs (default: %(default)s)")
    parser.add_argument("--list", action="store_true", help="print the cameras and end")
    parser.add_argument("--camera", metavar="UID", help="which camera (default: the first of the list)")
    parser.add_argument("--exposure-us", type=int, default=50000, help="microseconds (default: %(default)s)")
    parser.add_argument("--delay-ms", type=int, default=250, help="wait after a change (default: %(default)s)")
    parser.add_argument("-o", "--output", default="picture.png", help="file to save to (default: %(default)s)")
    args = parser.parse_args()
    hub = Hub(args.host)
    cameras = hub.call("camera:discover")
    if not cameras and not args.camera:
        raise HubError("no camera found; a hub that has just started needs a moment to find its cameras")
    if args.list:
        print_table(cameras)
    else:
        capture(hub, args.camera or cameras[0]["uid"], args)


if __name__ == "__main__":
    try:
        main()
    except (HubError, OSError) as error:
        sys.exit(f"capture.py: {error}")
