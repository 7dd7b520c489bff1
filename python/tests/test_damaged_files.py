"""Files that are missing, not databases, cut short or damaged: every failure is a zqaromcore.Error
that names the file, never a crash or another exception. Damaged files are read whole in child
processes (whole_read.py), so that a crash fails the case that caused it instead of the run."""

import random
import struct

import pytest

import zqaromcore
from samples import write_sample
from whole_read import read_in_children

ERROR_TYPE = "%s.%s" % (zqaromcore.Error.__module__, zqaromcore.Error.__qualname__)
# Generous: the children may run under the sanitizers on a busy machine.
CHILD_SECONDS = 300

# A plain database's layout: block 0, then linkage group 0 of 512 slots of 28 bytes (allocation,
# length and location as little-endian doubles, then the next slot's handle), then the objects.
BLOCK0 = 1024
BLOCK0_FIELDS = 528
LINKAGE = 28
GROUP = 512 * LINKAGE
COMPRESSED_SECTOR = 4096
# A third of them compressed; all of them are read in a fraction of a second.
FLIPPED_FILES = 600


def stored_double(data, at):
    return struct.unpack_from("<d", data, at)[0]


def slot(handle):
    return BLOCK0 + LINKAGE * handle


def location(data, handle):
    return int(stored_double(data, slot(handle) + 16) + 0.5)


def changed(data, at, replacement):
    damaged = bytearray(data)
    damaged[at:at + len(replacement)] = replacement
    return bytes(damaged)


def assert_error_naming(result, path, what=""):
    assert result["outcome"] == "error", (what, result)
    assert result["type"] == ERROR_TYPE, (what, result)
    assert result["filename"] == str(path), (what, result)
    assert str(path) in result["message"], (what, result)


def test_a_missing_file_or_one_that_is_no_database_raises_an_error_naming_it(tmp_path):
    text = tmp_path / "notes.txt"
    text.write_text("not a database\n" * 100)
    empty = tmp_path / "empty.zdb"
    empty.write_bytes(b"")
    noise = tmp_path / "noise.zdb"
    noise.write_bytes(bytes(random.Random(7).randrange(256) for _ in range(40000)))
    cases = [(tmp_path / "missing.zdb", "r"), (tmp_path / "no-folder" / "new.zdb", "w"), (tmp_path, "r"),
             (text, "r"), (text, "r+"), (text, "a"), (empty, "r"), (noise, "r")]
    for path, mode in cases:
        before = path.read_bytes() if path.is_file() else None
        with pytest.raises(zqaromcore.Error) as raised:
            zqaromcore.open(path, mode)
        assert raised.value.filename == str(path), (path, mode)
        assert str(path) in str(raised.value), (path, mode)
        # A refused file is left as it was.
        assert (path.read_bytes() if path.is_file() else None) == before, (path, mode)
    assert not (tmp_path / "no-folder").exists()


@pytest.fixture(scope="module")
def beam(programs, tmp_path_factory):
    """The example's results file, plain and compressed: (path, bytes) of each."""
    folder = tmp_path_factory.mktemp("damage")
    plain, compressed = folder / "beam.zdb", folder / "beam-compressed.zdb"
    programs.run(programs.results_file, plain)
    programs.run(programs.zdb, "compress", plain, compressed)
    return {"plain": (plain, plain.read_bytes()), "compressed": (compressed, compressed.read_bytes())}


def damage_cases(beam):
    """Damaged copies of the results file, by what was damaged: each must fail to read."""
    _, data = beam["plain"]
    with zqaromcore.open(beam["plain"][0]) as f:
        nodes = int(f.table("Nodes").handle)
        array = next(int(info.handle) for info in f.objects() if info.kind == "double array")
    allocation = stored_double(data, slot(nodes))
    cases = {
        "magic": changed(data, 0, b"ABCD"),
        "string pool's first word": changed(data, location(data, 1), b"\xff" * 4),
        "catalogue's first word": changed(data, location(data, 3), b"\xff" * 4),
        "table's length beyond its allocation": changed(data, slot(nodes) + 8, struct.pack("<d", allocation + 8)),
        "table's extent past the file's end": changed(data, slot(nodes) + 16, struct.pack("<d", len(data) + 4096)),
        "table's chain running on into a free slot": changed(data, slot(nodes) + 24, struct.pack("<i", 300)),
        "table's catalogue record": changed(data, location(data, nodes) + 8, struct.pack("<i", 0x7FFF0000)),
        "array's element type": changed(data, location(data, array) + 8, struct.pack("<i", 77)),
        "array's fields per row": changed(data, location(data, array) + 12, struct.pack("<i", 0)),
    }
    for length in (100, BLOCK0 - 1, BLOCK0 + 200, BLOCK0 + GROUP, location(data, array) + 10, len(data) - 1):
        cases["cut to %d bytes" % length] = data[:length]
    _, packed = beam["compressed"]
    cases.update({
        "compressed: container magic": changed(packed, 0, b"XXXX"),
        "compressed: segment bytes": changed(packed, COMPRESSED_SECTOR + 100, b"\x00\x01\x02"),
        "compressed: cut in its first segment": packed[:COMPRESSED_SECTOR + 100],
        "compressed: cut in its last sector": packed[:len(packed) - 10],
    })
    return cases


def test_damaged_and_truncated_databases_raise_an_error_naming_the_file(beam, tmp_path):
    cases = damage_cases(beam)
    paths = []
    for number, damaged in enumerate(cases.values()):
        path = tmp_path / ("damaged-%02d.zdb" % number)
        path.write_bytes(damaged)
        paths.append(str(path))
    for what, path, result in zip(cases, paths, read_in_children(paths, CHILD_SECONDS)):
        assert result["path"] == path
        assert_error_naming(result, path, what)


def flipped(data, regions, rng):
    """data with one to three bytes changed, each in a region picked at random."""
    damaged = bytearray(data)
    for _ in range(rng.randint(1, 3)):
        start, stop = rng.choice(regions)
        at = rng.randrange(start, stop)
        damaged[at] ^= rng.randint(1, 255)
    return bytes(damaged)


def test_random_byte_flips_read_as_data_or_raise_an_error_never_crash(tmp_path):
    plain, compressed = tmp_path / "sample.zdb", tmp_path / "sample-compressed.zdb"
    write_sample(plain, False)
    write_sample(compressed, True)
    data, packed = plain.read_bytes(), compressed.read_bytes()
    # The bytes that mean something: block 0's fields, the linkage slots in use, the objects; and
    # the whole of a compressed file.
    used = next(handle for handle in range(1, 512) if location(data, handle) == 0)
    plain_regions = [(0, BLOCK0_FIELDS), (BLOCK0, slot(used)), (BLOCK0 + GROUP, len(data))]
    rng = random.Random(20240501)
    paths = []
    for number in range(FLIPPED_FILES):
        path = tmp_path / ("flipped-%03d.zdb" % number)
        path.write_bytes(flipped(data, plain_regions, rng) if number % 3 else flipped(packed, [(0, len(packed))], rng))
        paths.append(str(path))
    results = read_in_children(paths, CHILD_SECONDS)
    crashes = [result for result in results if result["outcome"] == "crash"]
    assert not crashes, crashes[:3]
    errors = [result for result in results if result["outcome"] == "error"]
    for result in errors:
        assert_error_naming(result, result["path"])
    # The flips hit structure often enough to be worth their time, and leave some files readable.
    assert len(paths) // 6 < len(errors) < len(paths)
