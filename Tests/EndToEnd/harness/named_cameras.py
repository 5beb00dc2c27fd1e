"""Scenarios whose cameras have names for people."""

from harness.scenario import EXPOSURE, camera_group


def named_cameras(names, size=(320, 240), hardware=None):
    """Cameras with these names by uid: `hardware` describes those that are not like the others."""
    groups, nodes = [], []
    for number, (uid, name) in enumerate(names.items()):
        group = camera_group(uid, *size)
        group["sources"][0]["device"]["properties"] = {"System.Devices.DeviceInstanceId": f"node-{number}"}
        groups.append(group)
        nodes.append({"id": f"node-{number}", "properties": {"System.Devices.DeviceManufacturer": name}})
    cameras = {uid: {"exposure": EXPOSURE} for uid in names} | (hardware or {})
    return {"groups": groups, "deviceNodes": nodes, "cameras": cameras}
