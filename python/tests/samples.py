"""A sample file written from Python: every field type (absent fields included), arrays of each
element type and a tagged stream, with what was written in the form zqapy_ReadBack prints it."""

import numpy as np

import zqaromcore

INT32 = np.iinfo(np.int32)
TEXTS = ["", "plain", "Grüße aus Köln", "日本語のテキスト", "emoji 🎉 and tab\tend", "x" * 300]
DESCRIPTION = "Wrïtten from Python"


def write_sample(path, compressed):
    """Writes every field type (with absent fields), arrays of each element type and a tagged
    stream; returns what was written in the form read_back gives."""
    written = {}
    with zqaromcore.open(path, "w", compressed=compressed, description=DESCRIPTION) as f:
        arrays = [
            ("int", 4, np.array([[INT32.min, -1, 0, INT32.max], [7, 8, 9, 10], [1, 2, 3, 4]], dtype=np.int32)),
            ("float", 1, np.array([1.5, -0.1, 3.4e38, -0.0, 1e-40], dtype=np.float32)),
            ("double", 3, np.array([[np.pi, -0.0, 1e-300], [1e300, -2.5, 5e-324]])),
            ("string", 2, np.array([TEXTS[:2], TEXTS[2:4], TEXTS[4:6]], dtype=object)),
        ]
        handles = []
        for kind, fields, values in arrays:
            array = f.create_array(values, type=kind)
            handles.append(int(array.handle))
            rows = values.reshape(-1, fields).tolist()
            written[handles[-1]] = ("array", kind, fields, [[_word(kind, value) for value in row] for row in rows])

        rows = 7
        absent = np.array([False, True, False, False, True, False, False])
        columns = {
            "count": np.ma.MaskedArray(np.arange(rows, dtype=np.int32) * -3000, mask=absent),
            "ratio": np.ma.MaskedArray(np.linspace(-1, 1, rows).astype(np.float32), mask=absent[::-1]),
            "weight": np.linspace(0, 1e6, rows) / 7,
            "target": np.ma.MaskedArray(np.array(handles + handles[:3], dtype=np.int32), mask=~absent),
            "label": TEXTS[:4] + [None] + TEXTS[4:6],
        }
        types = {"count": "int", "ratio": "float", "weight": "double", "target": "handle", "label": "string"}
        table = f.create_table("Mixed ⚙", columns, types=types)
        # Rows added later, every field absent in one of them.
        table.append({"count": [1, 2], "label": ["after", None]})
        fields = sorted(types)
        expected_rows = [[_cell(columns[name], types[name], row) for name in fields] for row in range(rows)]
        expected_rows.append([1, _word("string", "after"), None, None, None])
        expected_rows.append([2, None, None, None, None])
        written[int(table.handle)] = ("table", "Mixed ⚙", [(name, types[name]) for name in fields], expected_rows)

        empty = f.create_table("Empty", {"only": np.zeros(0, dtype=np.float64)})
        written[int(empty.handle)] = ("table", "Empty", [("only", "double")], [])

        items = [(1, 42), (2, np.float32(0.3)), (3, 0.1), (4, zqaromcore.Handle(handles[0])), (5, "Ünïcode ✓"),
                 (-7, INT32.min), (1 << 20, ""), (9, -0.0)]
        stream = f.create_stream(items)
        written[int(stream.handle)] = ("stream", [(tag, _item_type(value), _word(_item_type(value), value))
                                                  for tag, value in items])
    return written


def _cell(values, kind, row):
    """Row row of a column as written: None where it holds no data."""
    if kind == "string":
        return None if values[row] is None else _word(kind, values[row])
    return None if np.ma.getmaskarray(values)[row] else _word(kind, np.ma.getdata(values)[row])


def _item_type(value):
    if isinstance(value, zqaromcore.Handle):
        return "handle"
    if isinstance(value, np.float32):
        return "float"
    if isinstance(value, float):
        return "double"
    return "int" if isinstance(value, int) else "string"


def _word(kind, value):
    """A value as zqapy_ReadBack prints it."""
    if kind in ("int", "handle"):
        return int(value)
    if kind in ("float", "double"):
        return float(np.float32(value) if kind == "float" else value).hex()
    return "x" + value.encode("utf-8").hex()
