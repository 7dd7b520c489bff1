"""Files written from Python, held against the C++ side: zdb's structural check, and a C++
program (zqapy_ReadBack.cpp) that reads them row by row through the library's C++ API."""

import pytest

from samples import DESCRIPTION, write_sample


def _parse(word, kind):
    if word == "-":
        return None
    if kind in ("int", "handle"):
        return int(word)
    if kind in ("float", "double"):
        return float.fromhex(word).hex()
    return word


def _text(word):
    """A text as zqapy_ReadBack prints it."""
    return bytes.fromhex(word[1:]).decode("utf-8")


def read_back(programs, path):
    """zqapy_ReadBack's output: the description, and {handle: object} as write_sample gives it."""
    lines = [line.split() for line in programs.run(programs.test_program("zqapy_ReadBack"), path).splitlines()]
    assert lines[0][0] == "description"
    description = _text(lines[0][1])
    objects = {}
    at = 1
    while at < len(lines):
        head = lines[at]
        at += 1
        if head[0] == "table":
            fields = []
            while at < len(lines) and lines[at][0] == "field":
                fields.append((_text(lines[at][1]), lines[at][2]))
                at += 1
            rows = [[_parse(word, kind) for word, (_, kind) in zip(line[1:], fields)]
                    for line in lines[at:at + int(head[3])]]
            objects[int(head[1])] = ("table", _text(head[2]), fields, rows)
            at += int(head[3])
        elif head[0] == "array":
            kind = head[2]
            rows = [[_parse(word, kind) for word in line[1:]] for line in lines[at:at + int(head[4])]]
            objects[int(head[1])] = ("array", kind, int(head[3]), rows)
            at += int(head[4])
        else:
            assert head[0] == "stream"
            items = []
            while at < len(lines) and lines[at][0] == "item":
                items.append((int(lines[at][1]), lines[at][2], _parse(lines[at][3], lines[at][2])))
                at += 1
            objects[int(head[1])] = ("stream", items)
    return description, objects


@pytest.mark.parametrize("compressed", [False, True], ids=["plain", "compressed"])
def test_a_file_written_from_python_checks_clean_and_reads_the_same_in_cpp(programs, tmp_path, compressed):
    path = tmp_path / "python.zdb"
    written = write_sample(path, compressed)
    report = programs.run(programs.zdb, "check", path)
    assert "no problems found (%s file" % ("compressed" if compressed else "plain") in report
    description, objects = read_back(programs, path)
    assert description == DESCRIPTION
    assert objects == written

