"""Sets what is in the summary of an installer: its dates, which tools take from the clock, and whether it
needs an administrator."""
import struct

# The identifier of the property set, as it is stored.
SUMMARY = bytes.fromhex("e0859ff2f94f6810ab9108002b27b3d9")
CREATED, SAVED, PRINTED = 12, 13, 11
FILE_TIME, NUMBER = 64, 3
KIND_OF_SOURCE = 15
NEEDS_NO_RIGHTS = 8
SECONDS_FROM_1601_TO_1970 = 11644473600


def _file_time(seconds):
    return struct.pack("<Q", (seconds + SECONDS_FROM_1601_TO_1970) * 10_000_000)


def _properties(path, image):
    """The identifiers of all properties, and where their types stand."""
    # The header of the set ends in its identifier and the distance of its one section.
    place = image.find(SUMMARY)
    if place < 0 or image.find(SUMMARY, place + 1) >= 0:
        raise ValueError(f"{path} has not exactly one summary")
    header = place - 28
    section = header + struct.unpack_from("<I", image, place + 16)[0]
    _, count = struct.unpack_from("<II", image, section)
    for index in range(count):
        name, distance = struct.unpack_from("<II", image, section + 8 + 8 * index)
        yield name, section + distance


def fix(path, seconds):
    image = bytearray(path.read_bytes())
    for name, place in _properties(path, image):
        if name not in (CREATED, SAVED, PRINTED):
            continue
        if struct.unpack_from("<I", image, place)[0] != FILE_TIME:
            raise ValueError(f"{path}: date {name} of the summary is none")
        image[place + 4:place + 12] = _file_time(seconds)
    path.write_bytes(image)


def need_no_rights(path):
    """Has the installer ask for no administrator."""
    image = bytearray(path.read_bytes())
    for name, place in _properties(path, image):
        if name == KIND_OF_SOURCE:
            kind, value = struct.unpack_from("<II", image, place)
            if kind != NUMBER:
                raise ValueError(f"{path}: the kind of source in the summary is no number")
            struct.pack_into("<I", image, place + 4, value | NEEDS_NO_RIGHTS)
            path.write_bytes(image)
            return
    raise ValueError(f"{path} does not say what kind of source it is")
