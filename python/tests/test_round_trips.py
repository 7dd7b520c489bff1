"""What Python writes reads back exactly: every field and element type, absent fields, the
values that conversions lose (NaN, infinities, -0.0, the ends of int32, non-ASCII text),
plain and compressed files; and misuse is refused with a clear error, changing nothing."""

import threading
from pathlib import Path

import numpy as np
import pytest

import zqaromcore

INT32 = np.iinfo(np.int32)
# More rows than the package moves through its string and handle buffers in one call.
MANY = 70_000


def same(expected, actual):
    """Bitwise equality for numbers (NaN equals NaN, -0.0 differs from 0.0), equality otherwise."""
    expected, actual = np.asarray(expected), np.asarray(actual)
    assert expected.shape == actual.shape
    if expected.dtype.kind == "f":
        assert expected.dtype == actual.dtype
        assert expected.tobytes() == actual.tobytes()
    else:
        assert expected.tolist() == actual.tolist()


def sample_columns(rows):
    """Columns of every field type, with the awkward values first and absent fields spread over rows."""
    rng = np.random.default_rng(7)
    doubles = rng.normal(size=rows)
    doubles[:5] = [np.nan, np.inf, -np.inf, -0.0, np.finfo(np.float64).max]
    floats = rng.normal(size=rows).astype(np.float32)
    floats[:4] = [np.nan, np.inf, -np.inf, np.finfo(np.float32).tiny]
    ints = rng.integers(INT32.min, INT32.max, size=rows, dtype=np.int64)
    ints[:2] = [INT32.min, INT32.max]
    words = ["", "Verschiebung ü", "位移", "tab\tand newline\n", "a" * 300]
    texts = [words[i % len(words)] if i % 7 else None for i in range(rows)]
    handles = np.arange(rows, dtype=np.int32) % 1000
    return {
        "d": np.ma.MaskedArray(doubles, mask=np.arange(rows) % 5 == 4),
        "f": floats,
        "i": np.ma.MaskedArray(ints, mask=np.arange(rows) % 3 == 2),
        "s": texts,
        "h": np.ma.MaskedArray(handles, mask=np.arange(rows) % 11 == 10),
    }


def check_columns(written, read, start=0):
    rows = len(read["f"])
    for name in ("d", "i", "h"):
        mask = np.ma.getmaskarray(written[name])[start:start + rows]
        assert read[name].mask.tolist() == mask.tolist(), name
        same(np.ma.getdata(written[name])[start:start + rows][~mask].astype(read[name].dtype),
             read[name].data[~mask])
    same(written["f"][start:start + rows], read["f"].data)
    assert not read["f"].mask.any()
    texts = written["s"][start:start + rows]
    assert read["s"].mask.tolist() == [text is None for text in texts]
    assert [text for text in read["s"].data] == [text if text is not None else "" for text in texts]


@pytest.mark.parametrize("compressed", [False, True], ids=["plain", "compressed"])
def test_table_of_every_field_type_reads_back_whole_and_in_parts(tmp_path, compressed):
    path = tmp_path / "table.zdb"
    written = sample_columns(MANY)
    types = {"h": "handle"}
    with zqaromcore.open(path, "w", compressed=compressed, description="round trip") as f:
        table = f.create_table("Values", written, types=types)
        assert table.fields == {"d": "double", "f": "float", "h": "handle", "i": "int", "s": "string"}
    with zqaromcore.open(path) as f:
        assert f.kind == ("compressed" if compressed else "plain")
        assert f.description == "round trip"
        assert [(info.name, info.rows) for info in f.tables()] == [("Values", MANY)]
        table = f.table("Values")
        check_columns(written, table.read())
        # Parts that start and end inside the buffered calls, and Python's slice rules.
        check_columns(written, table.read(start=65_000, stop=66_000), start=65_000)
        check_columns(written, table.read(start=-10), start=MANY - 10)
        assert len(table.read(start=MANY + 5)["d"]) == 0
        assert list(table.read(fields=["s", "f"])) == ["s", "f"]
        # A plain column gives the fill where a field holds no data.
        ints = table.column("i", fill=-1)
        assert ints.dtype == np.int32
        assert (ints[2::3] == -1).all()
        same(np.ma.getdata(written["i"])[:2].astype(np.int32), ints[:2])
        assert table.column("s")[0:8:7].tolist() == ["", ""]
        same(written["f"][10:20], table.column("f", 10, 20))


def test_appends_extend_a_table_and_fields_not_named_hold_no_data(tmp_path):
    path = tmp_path / "appends.zdb"
    with zqaromcore.open(path, "w") as f:
        f.create_table("Steps", {"step": [1, 2], "time": [0.5, 1.0], "label": ["a", "b"]})
    with zqaromcore.open(path, "r+") as f:
        steps = f.table("Steps")
        steps.append({"step": np.array([3], dtype=np.int16), "label": ["c"]})
        steps.append({"time": np.ma.MaskedArray([2.0, 3.0], mask=[True, False])})
        steps.append({"step": [None, 6], "time": [None, 6.0]})
    with zqaromcore.open(path) as f:
        steps = f.table("Steps").read()
    assert steps["step"].tolist() == [1, 2, 3, None, None, None, 6]
    assert steps["time"].tolist() == [0.5, 1.0, None, None, 3.0, None, 6.0]
    assert steps["label"].tolist() == ["a", "b", "c", None, None, None, None]


@pytest.mark.parametrize("compressed", [False, True], ids=["plain", "compressed"])
def test_arrays_of_every_element_type_read_back_as_rows_by_fields(tmp_path, compressed):
    path = tmp_path / "arrays.zdb"
    ints = np.array([[INT32.min, 0, INT32.max], [1, -1, 7]], dtype=np.int64)
    floats = np.array([[np.nan, np.inf], [-np.inf, -0.0], [1.5, 2.5]], dtype=np.float32)
    doubles = np.random.default_rng(3).normal(size=(50_000, 3))
    doubles[0] = [np.nan, -0.0, np.inf]
    texts = np.array([["", "ä"], ["位", "x" * 100]], dtype=object)
    with zqaromcore.open(path, "w", compressed=compressed) as f:
        handles = [f.create_array(values).handle for values in (ints, floats, doubles, texts)]
        column = f.create_array(np.arange(4, dtype=np.int32))
        column.append(np.array([[9]], dtype=np.int32))
        handles.append(column.handle)
    with zqaromcore.open(path) as f:
        arrays = [f.array(handle) for handle in handles]
        assert [(array.type, array.shape) for array in arrays] == [
            ("int", (2, 3)), ("float", (3, 2)), ("double", (50_000, 3)), ("string", (2, 2)), ("int", (5, 1))]
        same(ints.astype(np.int32), arrays[0].read())
        same(floats, arrays[1].read())
        same(doubles, np.asarray(arrays[2]))
        same(doubles[-7:-2], arrays[2].read(-7, -2))
        assert arrays[3].read().tolist() == texts.tolist()
        assert arrays[4].read().ravel().tolist() == [0, 1, 2, 3, 9]
        kinds = {info.handle: info.kind for info in f.objects()}
        assert [kinds[handle] for handle in handles] == [
            "int array", "float array", "double array", "string array", "int array"]


def test_a_tagged_stream_keeps_its_items_types_and_order_and_grows_after_a_reopen(tmp_path):
    path = tmp_path / "stream.zdb"
    items = [(1, INT32.min), (2, np.float32(0.1)), (3, 0.1), (4, float("nan")), (5, "Lastfall 位"),
             (6, zqaromcore.Handle(4)), (7, ""), (1, INT32.max)]
    with zqaromcore.open(path, "w") as f:
        handle = f.create_stream(items).handle
    with zqaromcore.open(path, "r+") as f:
        f.stream(handle).append([(8, -0.0)])
    with zqaromcore.open(path) as f:
        read = f.stream(handle).items()
    assert [tag for tag, _ in read] == [tag for tag, _ in items] + [8]
    for (_, expected), (_, actual) in zip(items + [(8, -0.0)], read):
        assert type(actual) is type(expected)
        if isinstance(expected, (float, np.floating)):
            same(np.array([expected]), np.array([actual], dtype=type(expected)))
        else:
            assert actual == expected


def test_misuse_is_refused_clearly_and_changes_nothing(tmp_path):
    path = tmp_path / "misuse.zdb"
    with zqaromcore.open(path, "w") as f:
        table = f.create_table("T", {"i": [1, 2], "s": ["a", "b"]})
        with pytest.raises(KeyError, match="no field 'x'"):
            table.append({"x": [1]})
        with pytest.raises(TypeError, match="'i' holds ints"):
            table.append({"i": [1.5]})
        with pytest.raises(OverflowError, match="32 bits"):
            table.append({"i": [2**31]})
        with pytest.raises(ValueError, match="has 1 values"):
            table.append({"i": [1, 2], "s": ["c"]})
        with pytest.raises(TypeError, match="holds strings"):
            table.append({"s": [3]})
        with pytest.raises(TypeError, match="stream holds no booleans"):
            f.create_stream([(1, True)])
        with pytest.raises(zqaromcore.Error, match="names no array"):
            f.array(table.handle)
        with pytest.raises(zqaromcore.Error, match="handle 999 names no table"):
            f.table(999)
        assert len(table) == 2
    with pytest.raises(zqaromcore.Error, match="closed"):
        len(table)
    with pytest.raises(zqaromcore.Error) as raised:
        zqaromcore.open(path, "x")
    assert raised.value.filename == str(path)
    with pytest.raises(ValueError, match="mode 'rw'"):
        zqaromcore.open(path, "rw")
    with zqaromcore.open(path) as f:
        with pytest.raises(zqaromcore.Error) as raised:
            f.table("T").append({"i": [3]})
        assert str(path) in str(raised.value)
        with pytest.raises(KeyError, match="no table 'U'"):
            f.table("U")
        assert f.table("T").read()["i"].tolist() == [1, 2]


def test_a_reader_in_the_same_process_snaps_to_the_writers_flushes(tmp_path):
    path = tmp_path / "snap.zdb"
    writer = zqaromcore.open(path, "w")
    table = writer.create_table("Rows", {"n": [0]})
    writer.flush()
    with zqaromcore.open(path) as reader:
        rows = reader.table("Rows")
        assert not reader.snap()
        table.append({"n": [1, 2]})
        writer.flush()
        assert reader.snap()
        assert rows.column("n").tolist() == [0, 1, 2]
        assert not reader.snap()
    writer.close()


def test_threads_reading_one_file_at_once_each_get_their_own_rows(tmp_path):
    path = tmp_path / "threads.zdb"
    values = np.arange(200_000, dtype=np.float64)
    with zqaromcore.open(path, "w") as f:
        f.create_table("T", {"x": values, "s": [str(i % 10) for i in range(len(values))]})
    failures = []
    with zqaromcore.open(path) as f:
        table = f.table("T")

        def read(start):
            for _ in range(5):
                x = table.column("x", start, start + 50_000)
                s = table.column("s", start, start + 1_000)
                if not (x == values[start:start + 50_000]).all() or s[3] != str((start + 3) % 10):
                    failures.append(start)

        threads = [threading.Thread(target=read, args=(start,)) for start in (0, 50_000, 100_000, 150_000)]
        for thread in threads:
            thread.start()
        for thread in threads:
            thread.join()
    assert failures == []


def test_the_readmes_example_runs_as_written(tmp_path, monkeypatch):
    readme = (Path(__file__).parents[2] / "README.md").read_text()
    block = readme.split("## Python\n", 1)[1].split("```python\n", 1)[1].split("```\n", 1)[0]
    monkeypatch.chdir(tmp_path)
    exec(compile(block, "README.md", "exec"), {})
    with zqaromcore.open(tmp_path / "job.zdb") as f:
        assert f.kind == "compressed"
        nodes = f.table("Nodes").read()
        assert nodes["label"].tolist() == ["root", None, "tip"]
        assert [info.kind for info in f.objects()][-2:] == ["double array", "stream"]
