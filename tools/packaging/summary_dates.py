"""Sets the dates in the summary of an installer, which its tools take from the clock."""
import struct

# The identifier of the property set, as it is stored.
SUMMARY = bytes.fromhex("e0859ff2f94f6810ab9108002b27b3d9")
CREATED, SAVED, PRINTED = 12, 13, 11
FILE_TIME = 64
SECONDS_FROM_1601_TO_1970 = 11644473600


def _file_time(seconds):
    return struct.pack("<Q", (seconds + SECONDS_FROM_1601_TO_1970) * 10_000_000)


def fix(path, seconds):
    image = bytearray(path.read_bytes())
    # The header of the set ends in its identifier and the distance of its one section.
    place = image.find(SUMMARY)
    if place < 0 or image.find(SUMMARY, place + 1) >= 0:
        raise ValueError(f"{path} has not exactly one summary")
    header = place - 28
    section = header + struct.unpack_from("<I", image, place + 16)[0]
    _, count = struct.unpack_from("<II", image, section)
    for index in range(count):
        name, distance = struct.unpack_from("<II", image, section + 8 + 8 * index)
        if name not in (CREATED, SAVED, PRINTED):
            continue
        if struct.unpack_from("<I", image, section + distance)[0] != FILE_TIME:
            raise ValueError(f"{path}: date {name} of the summary is none")
        image[section + distance + 4:section + distance + 12] = _file_time(seconds)
    path.write_bytes(image)
