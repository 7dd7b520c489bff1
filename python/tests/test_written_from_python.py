"""Files written from Python, held against the C++ side: zdb's structural check, and a C++
program (zqapy_ReadBack.cpp) that reads them row by row through the library's C++ API."""

import os

import pytest

import zqaromcore

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
    """A text as zqapy_ReadBack prints it, as the package reads it."""
    return bytes.fromhex(word[1:]).decode("utf-8", "surrogateescape")


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


def test_names_that_are_not_utf8_keep_their_bytes_both_ways(programs, tmp_path):
    # A C++ program may name its files, tables and fields in Latin-1: such bytes read as escaped
    # characters (surrogateescape), as in string values and as Python's os module gives file
    # names, and are written back as the same bytes.
    path = tmp_path / "latin1-\udce9.zdb"
    name, field, description = "Temp\udce9rature", "d\udce9bit", "Sch\udcf6n"
    with zqaromcore.open(path, "w", description=description) as f:
        f.create_table(name, {field: [1.5, 2.5], "n": [1, 2]})
    assert (tmp_path / "latin1-\udce9.zdb").exists() and os.fsencode(path).endswith(b"latin1-\xe9.zdb")
    data = path.read_bytes()
    assert [data.count(stored) for stored in (b"Temp\xe9rature", b"d\xe9bit", b"Sch\xf6n")] == [1, 1, 1]
    programs.run(programs.zdb, "check", path)
    read_description, objects = read_back(programs, path)
    assert read_description == description
    assert [entry for entry in objects.values() if entry[0] == "table"] == [
        ("table", name, [(field, "double"), ("n", "int")], [[(1.5).hex(), 1], [(2.5).hex(), 2]])]

    with zqaromcore.open(path, "r+") as f:
        assert f.name == str(path)
        assert f.description == description
        assert [info.name for info in f.objects() if info.kind == "table"] == [name]
        assert [(info.name, info.fields) for info in f.tables()] == [(name, {field: "double", "n": "int"})]
        table = f.table(name)
        assert table.name == name and list(table.fields) == [field, "n"]
        table.append({field: [3.5]})
        assert table.read()[field].tolist() == [1.5, 2.5, 3.5]
        with pytest.raises(KeyError) as raised:
            table.read(["flow"])
        assert raised.value.args[0] == "table 'Temp\\udce9rature' has no field 'flow'"
        with pytest.raises(ValueError, match="field 'd.udce9bit' has 2 values, the fields before it 1"):
            table.append({"n": [1], field: [1.0, 2.0]})

    missing = tmp_path / "missing-\udcf6.zdb"
    with pytest.raises(zqaromcore.Error) as raised:
        zqaromcore.open(missing)
    assert raised.value.filename == str(missing) and str(missing) in str(raised.value)
