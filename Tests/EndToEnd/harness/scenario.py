"""Scenario files for the simulated cameras."""

EXPOSURE = {"supported": True, "min": -13, "max": 0, "step": 1, "value": -6}


def camera_group(uid, width=64, height=48, name="Test Camera", **members):
    """A group of one colour preview source whose device, and the device that the watcher reports, has the
    uid as its id."""
    device = {"id": uid, "name": name}
    source = {"id": f"{uid}#source", "device": device, "profiles": [{"width": width, "height": height}]}
    return {"id": f"{uid}#group", "displayName": name, "watched": device, "sources": [source]} | members


def scenario(*uids, camera=None, cameras=None, **members):
    """Cameras of these uids: `cameras` describes the hardware by uid, `camera` that of all others."""
    default = {"exposure": EXPOSURE} if camera is None else camera
    hardware = {uid: default for uid in uids} | (cameras or {})
    return {"groups": [camera_group(uid) for uid in uids], "cameras": hardware} | members
